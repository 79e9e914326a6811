-- Devices that have reported since the beginning of the time that is looked at, and then no more
-- for as long as --silent says (26 hours). Version, area, cell, bars and mark are those of the
-- last report.
SELECT host, max(time) AS last_time,
       round(((SELECT until FROM ask) - max(time)) / 3600.0, 1) AS silent_hours,
       max(CASE WHEN time = newest_time THEN firmware END) AS version,
       max(CASE WHEN time = newest_time THEN lac END) AS area,
       max(CASE WHEN time = newest_time THEN cell_id END) AS cell,
       max(CASE WHEN time = newest_time THEN bars END) AS last_bars,
       max(CASE WHEN time = newest_time THEN stuck END) AS mark
FROM report
INNER JOIN (SELECT host, max(time) AS newest_time
            FROM report
            WHERE time >= (SELECT since FROM ask) AND time <= (SELECT until FROM ask)
            GROUP BY host
            HAVING max(time) < (SELECT until - silent_s FROM ask)) AS newest USING (host)
WHERE time = newest_time
GROUP BY host
ORDER BY last_time, host
