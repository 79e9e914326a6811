-- Devices that the network rejects, and why: their last reports all have a reject cause of an
-- attach or an update.
SELECT host, max(rejected) AS cause, min(time) AS since_time, max(time) AS last_time,
       count(*) AS reports, max(mcc) AS country, max(mnc) AS code, max(lac) AS area
FROM report
INNER JOIN (SELECT host, max(CASE WHEN rejected IS NULL THEN time ELSE 0 END) AS accepted_time
            FROM report
            WHERE time >= (SELECT since FROM ask) AND time <= (SELECT until FROM ask)
            GROUP BY host) AS accepted USING (host)
WHERE time > accepted_time
  AND time >= (SELECT since FROM ask) AND time <= (SELECT until FROM ask)
GROUP BY host
ORDER BY cause, since_time, host
