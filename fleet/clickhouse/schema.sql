-- The tables of a fleet, version 1, for ClickHouse 18.16 and later: on each server, in its default
-- database or in one of your own, and the cluster "fleet" that settings.xml names. The columns are
-- those of docs/fleet.md; zopctl compares them before it writes.

-- The rows of one shard. All rows of a device are on one shard, so a row that comes twice meets
-- itself there, and merges leave one of them.
CREATE TABLE IF NOT EXISTS report_shard (
  time UInt32,
  host String,
  key Int64,
  library Nullable(String),
  firmware Nullable(String),
  hardware Nullable(String),
  sim Nullable(String),
  network Nullable(String),
  mcc Nullable(String),
  mnc Nullable(String),
  band Nullable(String),
  channel Nullable(Int64),
  lac Nullable(Int64),
  rac Nullable(Int64),
  cell_id Nullable(Int64),
  bars Nullable(Int64),
  roaming Nullable(UInt8),
  rssi_dbm Nullable(Int64),
  rscp_dbm Nullable(Int64),
  ecio_db Nullable(Int64),
  tx_power_dbm Nullable(Int64),
  system_mode Nullable(String),
  data_service Nullable(String),
  service Nullable(String),
  registration Nullable(String),
  call Nullable(String),
  mm_attach Nullable(String),
  mm_location_update Nullable(String),
  gmm_attach Nullable(String),
  gmm_state Nullable(String),
  gmm_routing_update Nullable(String),
  pdp_state Nullable(String),
  mm_attach_cause Nullable(Int64),
  mm_location_cause Nullable(Int64),
  gmm_attach_cause Nullable(Int64),
  gmm_routing_cause Nullable(Int64),
  pdp_cause Nullable(Int64),
  rejected Nullable(String),
  refused Nullable(String),
  stuck Nullable(String),
  exception Nullable(String),
  rx_bytes Nullable(Int64),
  tx_bytes Nullable(Int64),
  rx_errors Nullable(Int64),
  tx_errors Nullable(Int64),
  field_test_age_s Nullable(Int64),
  rest String
) ENGINE = ReplacingMergeTree()
PARTITION BY toYYYYMM(toDateTime(time))
ORDER BY (host, time, key);

-- All shards together: what is written to and asked.
CREATE TABLE IF NOT EXISTS report AS report_shard
ENGINE = Distributed(fleet, currentDatabase(), report_shard, cityHash64(host));

-- Hours of each cell and version. A row that comes twice changes nothing: devices and reports are
-- counted as sets, levels by their extremes.
CREATE MATERIALIZED VIEW IF NOT EXISTS hour_shard
ENGINE = AggregatingMergeTree()
PARTITION BY toYYYYMM(toDateTime(hour_time))
ORDER BY (hour_time, lac, cell_id, firmware)
AS SELECT toUInt32(intDiv(time, 3600) * 3600) AS hour_time,
  ifNull(lac, 0) AS lac, ifNull(cell_id, 0) AS cell_id, ifNull(firmware, '') AS firmware,
  uniqState(host) AS devices, uniqState(key) AS reports,
  uniqState(if(stuck IS NULL, NULL, host)) AS stuck_devices,
  uniqState(if(rejected IS NULL, NULL, host)) AS rejected_devices,
  minState(rscp_dbm) AS worst_rscp_dbm
FROM report_shard
GROUP BY hour_time, lac, cell_id, firmware;

CREATE TABLE IF NOT EXISTS hour AS hour_shard
ENGINE = Distributed(fleet, currentDatabase(), hour_shard, rand());
