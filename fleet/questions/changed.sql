-- What changed since the day before: a row for each device that is new or back, and for each change of a
-- device's versions, SIM, network, registration or troubles. The last report of the last day is
-- compared with the last one before that day. What one of the two does not tell is no change, and a
-- device is stuck when at least two reports say so.
SELECT host, what, old_value, new_value, old_time, new_time
FROM (SELECT host, what, old_time, new_time,
             CASE WHEN what = 'firmware' THEN old_firmware
                  WHEN what = 'hardware' THEN old_hardware
                  WHEN what = 'sim' THEN old_sim
                  WHEN what = 'network' THEN old_network
                  WHEN what = 'registration' THEN old_registration
                  WHEN what = 'rejected' THEN coalesce(old_rejected, 'no')
                  WHEN what = 'stuck' THEN coalesce(old_stuck, 'no') END AS old_value,
             CASE WHEN what = 'firmware' THEN new_firmware
                  WHEN what = 'hardware' THEN new_hardware
                  WHEN what = 'sim' THEN new_sim
                  WHEN what = 'network' THEN new_network
                  WHEN what = 'registration' THEN new_registration
                  WHEN what = 'rejected' THEN coalesce(new_rejected, 'no')
                  WHEN what = 'stuck' THEN coalesce(new_stuck, 'no')
                  ELSE 'new' END AS new_value
      FROM (SELECT * FROM
              (SELECT host, newest_time AS new_time,
                      max(CASE WHEN time = newest_time THEN firmware END) AS new_firmware,
                      max(CASE WHEN time = newest_time THEN hardware END) AS new_hardware,
                      max(CASE WHEN time = newest_time THEN sim END) AS new_sim,
                      max(CASE WHEN time = newest_time THEN network END) AS new_network,
                      max(CASE WHEN time = newest_time THEN registration END) AS new_registration,
                      max(CASE WHEN time = newest_time THEN rejected END) AS new_rejected,
                      CASE WHEN min(CASE WHEN stuck IS NOT NULL THEN time END) < newest_time
                           THEN max(CASE WHEN time = newest_time THEN stuck END) END AS new_stuck
               FROM report
               INNER JOIN (SELECT host, max(time) AS newest_time,
                                  max(CASE WHEN stuck IS NULL THEN time ELSE 0 END) AS healthy_time
                           FROM report
                           WHERE time > (SELECT since FROM ask)
                             AND time <= (SELECT until FROM ask)
                           GROUP BY host
                           HAVING max(time) > (SELECT until - 86400 FROM ask)) AS last_new
                     USING (host)
               WHERE time >= healthy_time AND time > (SELECT since FROM ask)
                 AND time <= (SELECT until FROM ask)
               GROUP BY host, newest_time) AS newer
            LEFT JOIN
              (SELECT host, newest_time AS old_time,
                      max(CASE WHEN time = newest_time THEN firmware END) AS old_firmware,
                      max(CASE WHEN time = newest_time THEN hardware END) AS old_hardware,
                      max(CASE WHEN time = newest_time THEN sim END) AS old_sim,
                      max(CASE WHEN time = newest_time THEN network END) AS old_network,
                      max(CASE WHEN time = newest_time THEN registration END) AS old_registration,
                      max(CASE WHEN time = newest_time THEN rejected END) AS old_rejected,
                      CASE WHEN min(CASE WHEN stuck IS NOT NULL THEN time END) < newest_time
                           THEN max(CASE WHEN time = newest_time THEN stuck END) END AS old_stuck
               FROM report
               INNER JOIN (SELECT host, max(time) AS newest_time,
                                  max(CASE WHEN stuck IS NULL THEN time ELSE 0 END) AS healthy_time
                           FROM report
                           WHERE time > (SELECT since - 86400 FROM ask)
                             AND time <= (SELECT until - 86400 FROM ask)
                           GROUP BY host) AS last_old USING (host)
               WHERE time >= healthy_time AND time > (SELECT since - 86400 FROM ask)
                 AND time <= (SELECT until - 86400 FROM ask)
               GROUP BY host, newest_time) AS older USING (host)) AS both
      CROSS JOIN (SELECT 'device' AS what UNION ALL SELECT 'firmware' UNION ALL
                  SELECT 'hardware' UNION ALL SELECT 'sim' UNION ALL SELECT 'network' UNION ALL
                  SELECT 'registration' UNION ALL SELECT 'rejected' UNION ALL SELECT 'stuck') AS kinds
     ) AS compared
WHERE old_value != new_value AND old_time IS NOT NULL OR old_time IS NULL AND what = 'device'
ORDER BY what, host
