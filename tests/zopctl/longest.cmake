# Before the others: at the end of a run nothing long may be left for one processor.
foreach(test zopctl_update_ends.all zopctl_update_begins.all zopctl_update_writes.all
    zopctl_recordings.all zopctl_report.all zopctl_exception.all terminal_waiting.all
    terminal_monitor_changes.all terminal_monitor_sizes.all ZopctlSignals.end_what_may_end
    zopctl_support.all zopctl_dump_breaks.all)
  set_tests_properties(${test} PROPERTIES COST 200)
endforeach()
