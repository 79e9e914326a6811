-- The reports of the device that --host names, the newest first.
SELECT time, firmware, lac, cell_id, bars, rssi_dbm, rscp_dbm, ecio_db, service, registration,
       gmm_attach, pdp_state, rejected, refused, stuck, exception
FROM report
WHERE host = (SELECT host FROM ask)
  AND time >= (SELECT since FROM ask) AND time <= (SELECT until FROM ask)
ORDER BY time DESC, key
