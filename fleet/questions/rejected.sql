-- Devices that the network rejects, and why: their last reports all have a reject cause of an
-- attach or an update. Cause, network, version and area are those of the last report.
SELECT host, max(CASE WHEN time = newest_time THEN rejected END) AS cause,
       min(time) AS since_time, max(time) AS last_time, count(*) AS reports,
       max(CASE WHEN time = newest_time THEN firmware END) AS version,
       max(CASE WHEN time = newest_time THEN mcc END) AS country,
       max(CASE WHEN time = newest_time THEN mnc END) AS code,
       max(CASE WHEN time = newest_time THEN lac END) AS area
FROM report
INNER JOIN (SELECT host, max(CASE WHEN rejected IS NULL THEN time ELSE 0 END) AS accepted_time,
                   max(time) AS newest_time
            FROM report
            WHERE time >= (SELECT since FROM ask) AND time <= (SELECT until FROM ask)
            GROUP BY host
            HAVING max(time) > max(CASE WHEN rejected IS NULL THEN time ELSE 0 END)) AS rejecting
      USING (host)
WHERE time > accepted_time
  AND time >= (SELECT since FROM ask) AND time <= (SELECT until FROM ask)
GROUP BY host
ORDER BY cause, since_time, host
