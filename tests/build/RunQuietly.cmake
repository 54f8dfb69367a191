# What a quiet build shows: one line when it works; the name of its log, and its status, when it fails.
#   SCRIPT  cmake/run-quietly.sh
#   WORK    a folder for this test

set(log ${WORK}/below/build.log)
file(REMOVE_RECURSE ${WORK})

# run(COMMAND RESULT SHOWN) leaves the exit status, and what is shown.
macro(run command result shown)
  execute_process(COMMAND sh ${SCRIPT} ${log} Building sh -c "${command}"
    RESULT_VARIABLE ${result} OUTPUT_VARIABLE ${shown} ERROR_VARIABLE ${shown})
endmacro()

run("echo '[ 50%] one'; echo two >&2" result shown)
if(NOT result EQUAL 0 OR NOT shown MATCHES "^Building [.][.][.] done in [0-9]+ s\n$")
  message(FATAL_ERROR "${result}: ${shown}")
endif()
file(READ ${log} logged)
if(NOT logged STREQUAL "[ 50%] one\ntwo\n")
  message(FATAL_ERROR "logged: ${logged}")
endif()

run("echo '[ 50%] one'; exit 7" result shown)
if(NOT result EQUAL 7 OR NOT shown STREQUAL "Building ... failed\nWhat it printed is in ${log}\n")
  message(FATAL_ERROR "${result}: ${shown}")
endif()
