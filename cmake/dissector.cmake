# Writes the dissector with the names of the simulated modem's requests.
# Usage: cmake -DSIMULATOR=... -DSOURCE=... -DOUTPUT=... -P dissector.cmake
execute_process(COMMAND ${SIMULATOR} --list-requests
  OUTPUT_VARIABLE lines COMMAND_ERROR_IS_FATAL ANY)
string(REGEX REPLACE "([^ \n]+) ([^ \n]+) ([^ \n]+) ([^ \n]+)\n"
  "request(\"\\1\", \"\\2\", \"\\3\", \"\\4\")\n" rows "${lines}")
file(READ ${SOURCE} dissector)
string(REPLACE "-- @REQUESTS@\n" "${rows}" dissector "${dissector}")
file(WRITE ${OUTPUT} "${dissector}")
