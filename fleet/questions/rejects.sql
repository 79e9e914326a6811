-- Reject causes over time, by hour and area: of the registration, and of the data connection.
SELECT hour_time, what, cause, lac, devices, reports
FROM (SELECT time - time % 3600 AS hour_time, 'registration' AS what, rejected AS cause, lac,
             count(DISTINCT host) AS devices, count(*) AS reports
      FROM report
      WHERE time >= (SELECT since FROM ask) AND time <= (SELECT until FROM ask)
        AND rejected IS NOT NULL
      GROUP BY hour_time, rejected, lac
      UNION ALL
      SELECT time - time % 3600 AS hour_time, 'data' AS what, refused AS cause, lac,
             count(DISTINCT host) AS devices, count(*) AS reports
      FROM report
      WHERE time >= (SELECT since FROM ask) AND time <= (SELECT until FROM ask)
        AND refused IS NOT NULL
      GROUP BY hour_time, refused, lac) AS both
ORDER BY hour_time, what, cause, lac
