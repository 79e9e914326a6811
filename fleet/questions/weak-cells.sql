-- Cells with the worst level: RSCP of a WCDMA cell, RSSI of another one, on average over all
-- reports from it that have one.
SELECT mcc, mnc, lac, cell_id, round(avg(level), 1) AS level_dbm, min(level) AS worst_dbm,
       round(avg(ecio_db), 1) AS mean_ecio_db, round(avg(bars), 1) AS mean_bars,
       count(DISTINCT host) AS devices, count(*) AS reports
FROM (SELECT mcc, mnc, lac, cell_id, host, ecio_db, bars,
             CASE WHEN rscp_dbm IS NOT NULL THEN rscp_dbm
                  WHEN coalesce(system_mode, '') != 'WCDMA' THEN rssi_dbm END AS level
      FROM report
      WHERE time >= (SELECT since FROM ask) AND time <= (SELECT until FROM ask)
        AND cell_id IS NOT NULL) AS heard
WHERE level IS NOT NULL
GROUP BY mcc, mnc, lac, cell_id
ORDER BY level_dbm, coalesce(mcc, ''), coalesce(mnc, ''), coalesce(lac, -1), cell_id
