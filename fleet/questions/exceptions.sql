-- Exceptions by name and firmware version.
SELECT exception, firmware, count(DISTINCT host) AS devices, count(*) AS reports,
       min(time) AS first_time, max(time) AS last_time
FROM report
WHERE time >= (SELECT since FROM ask) AND time <= (SELECT until FROM ask)
  AND exception IS NOT NULL
GROUP BY exception, firmware
ORDER BY reports DESC, exception, coalesce(firmware, '')
