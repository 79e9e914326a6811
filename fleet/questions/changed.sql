-- Devices whose versions, SIM, network or troubles are not what they were a day before: the last
-- report until then, and the last one of all.
SELECT host, old_time, new_time, old_firmware, new_firmware, old_sim, new_sim, old_network,
       new_network, old_registration, new_registration, old_rejected, new_rejected, old_stuck,
       new_stuck
FROM (SELECT host, time AS new_time, firmware AS new_firmware, sim AS new_sim,
             network AS new_network, registration AS new_registration, rejected AS new_rejected,
             stuck AS new_stuck
      FROM report
      WHERE (host, time) IN (SELECT host, max(time) FROM report
                             WHERE time <= (SELECT until FROM ask) GROUP BY host)) AS newest
INNER JOIN (SELECT host, time AS old_time, firmware AS old_firmware, sim AS old_sim,
             network AS old_network, registration AS old_registration, rejected AS old_rejected,
             stuck AS old_stuck
      FROM report
      WHERE (host, time) IN (SELECT host, max(time) FROM report
                             WHERE time <= (SELECT until - 86400 FROM ask) GROUP BY host)) AS older
      USING (host)
WHERE coalesce(old_firmware, '') != coalesce(new_firmware, '')
   OR coalesce(old_sim, '') != coalesce(new_sim, '')
   OR coalesce(old_network, '') != coalesce(new_network, '')
   OR coalesce(old_registration, '') != coalesce(new_registration, '')
   OR coalesce(old_rejected, '') != coalesce(new_rejected, '')
   OR coalesce(old_stuck, '') != coalesce(new_stuck, '')
ORDER BY host
