-- Devices that have reported, and then no more for as long as --silent says (26 hours).
SELECT host, max(time) AS last_time, count(*) AS reports
FROM report
WHERE time >= (SELECT since FROM ask) AND time <= (SELECT until FROM ask)
GROUP BY host
HAVING max(time) < (SELECT until - silent_s FROM ask)
ORDER BY last_time, host
