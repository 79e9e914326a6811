// Rendering: the diagnostic report as a text of lines, and as lines of label=value pairs in syslog.
#pragma once

// Fills in the lengths of the items' names; by every vurn_open.
void prv_zop_init_logging();

// The report into buf of bufLen bytes, terminated, and to syslog as well. 1 when all of it fitted.
int prv_zop_output_to_log_string(char* buf, int bufLen, int ignored);

// The report to syslog: a snapshot, or with the exception called name. The code is not shown.
void prv_zop_output_to_syslog(unsigned code, const char* name, int snapshot);

// The renderer of both. excName null leaves the exception out, buf null the log string.
int prv_output_somewhere(const char* excName, int toSyslog, int snapshotOnly, char* buf,
                         unsigned bufLen);
