# Runs the demonstration as the Makefile does, with folders relative to the one above them.
#   SCRIPT    examples/demo/run.sh
#   EXAMPLES  the folder of the programs
#   TOOL      yaxreg, if it is built
#   WORK      a folder for this test

file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK})
get_filename_component(above ${EXAMPLES} DIRECTORY)
file(RELATIVE_PATH arguments ${above} ${EXAMPLES})
if(TOOL)
  get_filename_component(folder ${TOOL} DIRECTORY)
  file(RELATIVE_PATH folder ${above} ${folder})
  file(RELATIVE_PATH map ${above} ${WORK}/house.svg)
  list(APPEND arguments ${folder} ${map})
endif()

execute_process(COMMAND sh ${SCRIPT} ${arguments} WORKING_DIRECTORY ${above}
  RESULT_VARIABLE result OUTPUT_VARIABLE story ERROR_VARIABLE story)
message("${story}")
if(NOT result EQUAL 0)
  message(FATAL_ERROR "The demonstration ended with ${result}")
endif()
# Its last step, and no colour where there is no terminal.
string(ASCII 27 escape)
if(NOT story MATCHES "thread 4: +[1-9][0-9]* changes.*That is libYAX" OR story MATCHES ${escape})
  message(FATAL_ERROR "The demonstration does not end as it should")
endif()
foreach(name IN ITEMS house.svg device.html)
  if(TOOL AND NOT EXISTS ${WORK}/${name})
    message(FATAL_ERROR "There is no ${name}")
  endif()
endforeach()
