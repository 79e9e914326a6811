-- Cells with the worst level: RSCP of a WCDMA cell, RSSI of another one, on average over all
-- reports from it.
SELECT mcc, mnc, lac, cell_id, round(avg(coalesce(rscp_dbm, rssi_dbm)), 1) AS level_dbm,
       min(coalesce(rscp_dbm, rssi_dbm)) AS worst_dbm, round(avg(ecio_db), 1) AS mean_ecio_db,
       round(avg(bars), 1) AS mean_bars, count(DISTINCT host) AS devices, count(*) AS reports
FROM report
WHERE time >= (SELECT since FROM ask) AND time <= (SELECT until FROM ask)
  AND cell_id IS NOT NULL AND coalesce(rscp_dbm, rssi_dbm) IS NOT NULL
GROUP BY mcc, mnc, lac, cell_id
ORDER BY level_dbm, mcc, mnc, lac, cell_id
