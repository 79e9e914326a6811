-- Location areas with the worst level, and which share of the reports from there, in percent, has a
-- mark of a stuck modem or a reject.
SELECT mcc, mnc, lac, round(avg(level), 1) AS level_dbm, min(level) AS worst_dbm,
       count(DISTINCT cell_id) AS cells, count(DISTINCT host) AS devices, count(*) AS reports,
       round(100.0 * count(stuck) / count(*), 2) AS stuck_percent,
       round(100.0 * count(rejected) / count(*), 2) AS rejected_percent
FROM (SELECT mcc, mnc, lac, cell_id, host, stuck, rejected,
             CASE WHEN rscp_dbm IS NOT NULL THEN rscp_dbm
                  WHEN coalesce(system_mode, '') != 'WCDMA' THEN rssi_dbm END AS level
      FROM report
      WHERE time >= (SELECT since FROM ask) AND time <= (SELECT until FROM ask)
        AND lac IS NOT NULL) AS heard
GROUP BY mcc, mnc, lac
HAVING count(level) > 0
ORDER BY level_dbm, coalesce(mcc, ''), coalesce(mnc, ''), lac
