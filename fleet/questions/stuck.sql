-- Devices that are stuck: their last reports all have a mark of it, and at least two have. A mark
-- of one moment may be the way between two states. Mark, version and cell are those of
-- the last report; who has been stuck all the time is so since its first report.
SELECT host, max(CASE WHEN time = newest_time THEN stuck END) AS mark, min(time) AS since_time,
       max(time) AS last_time, count(*) AS reports,
       max(CASE WHEN time = newest_time THEN firmware END) AS version,
       max(CASE WHEN time = newest_time THEN lac END) AS area,
       max(CASE WHEN time = newest_time THEN cell_id END) AS cell
FROM report
INNER JOIN (SELECT host, max(CASE WHEN stuck IS NULL THEN time ELSE 0 END) AS healthy_time,
                   max(time) AS newest_time
            FROM report
            WHERE time >= (SELECT since FROM ask) AND time <= (SELECT until FROM ask)
            GROUP BY host
            HAVING max(time) > max(CASE WHEN stuck IS NULL THEN time ELSE 0 END)) AS marked
      USING (host)
WHERE time > healthy_time
  AND time >= (SELECT since FROM ask) AND time <= (SELECT until FROM ask)
GROUP BY host
HAVING min(time) < max(time)
ORDER BY since_time, host
