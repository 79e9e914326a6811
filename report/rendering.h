// Renders the diagnostic report: as lines of text, and as syslog lines of label=value pairs.
#pragma once

// Sets the lengths of the items' names. Called by every vurn_open.
void prv_zop_init_logging();

// Writes the report to buf of bufLen bytes, terminated, and to syslog. 1 if all of it fitted.
int prv_zop_output_to_log_string(char* buf, int bufLen, int ignored);

// Writes a snapshot, or a report of the exception name, to syslog. The code is not shown.
void prv_zop_output_to_syslog(unsigned code, const char* name, int snapshot);

// Renders both forms. A null excName omits the exception, a null buf the log string.
int prv_output_somewhere(const char* excName, int toSyslog, int snapshotOnly, char* buf,
                         unsigned bufLen);
