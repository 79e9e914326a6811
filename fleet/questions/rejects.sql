-- Reject causes over time, by hour: of the registration, and of the data connection.
SELECT hour_time, what, cause, devices, reports, areas
FROM (SELECT time - time % 3600 AS hour_time, 'registration' AS what, rejected AS cause,
             count(DISTINCT host) AS devices, count(*) AS reports,
             count(DISTINCT lac) AS areas
      FROM report
      WHERE time >= (SELECT since FROM ask) AND time <= (SELECT until FROM ask)
        AND rejected IS NOT NULL
      GROUP BY hour_time, rejected
      UNION ALL
      SELECT time - time % 3600 AS hour_time, 'data' AS what, refused AS cause,
             count(DISTINCT host) AS devices, count(*) AS reports,
             count(DISTINCT lac) AS areas
      FROM report
      WHERE time >= (SELECT since FROM ask) AND time <= (SELECT until FROM ask)
        AND refused IS NOT NULL
      GROUP BY hour_time, refused) AS both
ORDER BY hour_time DESC, what, cause
