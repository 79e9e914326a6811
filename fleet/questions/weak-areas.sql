-- Location areas with the worst level, with how many devices are stuck or rejected there at all.
SELECT mcc, mnc, lac, round(avg(coalesce(rscp_dbm, rssi_dbm)), 1) AS level_dbm,
       min(coalesce(rscp_dbm, rssi_dbm)) AS worst_dbm, count(DISTINCT cell_id) AS cells,
       count(DISTINCT host) AS devices,
       count(DISTINCT CASE WHEN stuck IS NOT NULL THEN host END) AS marked_devices,
       count(DISTINCT CASE WHEN rejected IS NOT NULL THEN host END) AS rejected_devices,
       count(*) AS reports
FROM report
WHERE time >= (SELECT since FROM ask) AND time <= (SELECT until FROM ask)
  AND lac IS NOT NULL
GROUP BY mcc, mnc, lac
ORDER BY level_dbm, mcc, mnc, lac
