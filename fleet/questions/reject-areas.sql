-- Where devices are rejected: causes by location area, those of most devices first.
SELECT rejected AS cause, mcc, mnc, lac, count(DISTINCT host) AS devices, count(*) AS reports,
       min(time) AS first_time, max(time) AS last_time
FROM report
WHERE time >= (SELECT since FROM ask) AND time <= (SELECT until FROM ask)
  AND rejected IS NOT NULL
GROUP BY rejected, mcc, mnc, lac
ORDER BY devices DESC, reports DESC, cause, coalesce(mcc, ''), coalesce(mnc, ''),
         coalesce(lac, -1)
