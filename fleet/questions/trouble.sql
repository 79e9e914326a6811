-- Trouble by cell, version and device: how many of its reports there have a reject, a refused data
-- connection, an exception or a mark of a stuck modem.
SELECT mcc, mnc, lac, cell_id, firmware, host, count(*) AS reports,
       sum(CASE WHEN rejected IS NOT NULL OR refused IS NOT NULL OR exception IS NOT NULL
                  OR stuck IS NOT NULL THEN 1 ELSE 0 END) AS troubled
FROM report
WHERE time >= (SELECT since FROM ask) AND time <= (SELECT until FROM ask)
GROUP BY mcc, mnc, lac, cell_id, firmware, host
ORDER BY troubled DESC, host, coalesce(mcc, ''), coalesce(mnc, ''), coalesce(lac, -1),
         coalesce(cell_id, -1), coalesce(firmware, '')
