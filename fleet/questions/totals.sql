-- How much there is: devices, reports, and from when to when.
SELECT count(DISTINCT host) AS devices, count(*) AS reports, min(time) AS first_time,
       max(time) AS last_time
FROM report
WHERE time >= (SELECT since FROM ask) AND time <= (SELECT until FROM ask)
