-- How much there is: devices, reports, and from when to when.
SELECT count(DISTINCT host) AS devices, count(*) AS reports,
       CASE WHEN count(*) > 0 THEN min(time) END AS first_time,
       CASE WHEN count(*) > 0 THEN max(time) END AS last_time
FROM report
WHERE time >= (SELECT since FROM ask) AND time <= (SELECT until FROM ask)
