# Writes the dissector with the names of the simulated modem's requests and the words of its states.
# Usage: cmake -DSIMULATOR=... -DSTATE_WORDS=... -DSOURCE=... -DOUTPUT=... -P dissector.cmake
separate_arguments(SIMULATOR)
separate_arguments(STATE_WORDS)
execute_process(COMMAND ${SIMULATOR} --list-requests
  OUTPUT_VARIABLE lines COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${STATE_WORDS} OUTPUT_VARIABLE words COMMAND_ERROR_IS_FATAL ANY)
string(REGEX REPLACE "([^ \n]+) ([^ \n]+) ([^ \n]+) ([^ \n]+)\n"
  "request(\"\\1\", \"\\2\", \"\\3\", \"\\4\")\n" rows "${lines}")
file(READ ${SOURCE} dissector)
string(REPLACE "-- @REQUESTS@\n" "${rows}" dissector "${dissector}")
string(REPLACE "-- @WORDS@\n" "${words}" dissector "${dissector}")
file(WRITE ${OUTPUT} "${dissector}")
