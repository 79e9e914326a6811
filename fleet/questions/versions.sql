-- Firmware versions compared: which share of their reports, in percent, has a mark of a stuck
-- modem, a reject, a refused data connection or an exception.
SELECT firmware, hardware, count(DISTINCT host) AS devices, count(*) AS reports,
       round(100.0 * count(stuck) / count(*), 2) AS stuck_percent,
       round(100.0 * count(rejected) / count(*), 2) AS rejected_percent,
       round(100.0 * count(refused) / count(*), 2) AS refused_percent,
       round(100.0 * count(exception) / count(*), 2) AS exception_percent,
       round(avg(bars), 2) AS mean_bars
FROM report
WHERE time >= (SELECT since FROM ask) AND time <= (SELECT until FROM ask)
GROUP BY firmware, hardware
ORDER BY refused_percent + exception_percent + stuck_percent + rejected_percent DESC,
         coalesce(firmware, ''), coalesce(hardware, '')
