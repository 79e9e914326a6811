-- Devices that are stuck: their last reports all have a mark of it, and at least two have. A mark
-- that only one report has may be a moment between two states.
SELECT host, max(stuck) AS mark, min(time) AS since_time, max(time) AS last_time,
       count(*) AS reports, max(firmware) AS version, max(cell_id) AS cell
FROM report
INNER JOIN (SELECT host, max(CASE WHEN stuck IS NULL THEN time ELSE 0 END) AS healthy_time
            FROM report
            WHERE time >= (SELECT since FROM ask) AND time <= (SELECT until FROM ask)
            GROUP BY host) AS healthy USING (host)
WHERE time > healthy_time
  AND time >= (SELECT since FROM ask) AND time <= (SELECT until FROM ask)
GROUP BY host
HAVING count(*) > 1
ORDER BY since_time, host
