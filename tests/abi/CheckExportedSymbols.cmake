# cmake -DNM=... -DLIBRARY=libYAX.so -DKEPT=list [-DUPDATE=ON] -P CheckExportedSymbols.cmake
# Compares the symbols that the library exports with the kept list, or writes that list. They are
# compared in readable form, which is the same for 32 and 64 bits.

execute_process(COMMAND ${NM} --dynamic --defined-only --demangle --format=posix ${LIBRARY}
  OUTPUT_VARIABLE text COMMAND_ERROR_IS_FATAL ANY)
string(REGEX REPLACE "\n$" "" text "${text}")
string(REPLACE "\n" ";" lines "${text}")

# A line is "name@@version type value size"; the version has a line of its own.
list(FILTER lines EXCLUDE REGEX "^YAX_[0-9]+ A ")
set(exported)
foreach(line IN LISTS lines)
  if(NOT line MATCHES "^(.+)@@YAX_[0-9]+ [A-Za-z] ")
    message(FATAL_ERROR "A symbol without our version: ${line}")
  endif()
  list(APPEND exported "${CMAKE_MATCH_1}")
endforeach()
# A constructor has several symbols of the same readable form.
list(REMOVE_DUPLICATES exported)
list(SORT exported)

if(UPDATE)
  list(JOIN exported "\n" text)
  file(WRITE ${KEPT} "${text}\n")
  return()
endif()

file(STRINGS ${KEPT} kept)
set(missing ${kept})
list(REMOVE_ITEM missing ${exported})
set(added ${exported})
list(REMOVE_ITEM added ${kept})
foreach(symbol IN LISTS missing)
  message(SEND_ERROR "No longer exported: ${symbol}")
endforeach()
foreach(symbol IN LISTS added)
  message(SEND_ERROR "Exported, but not in the kept list: ${symbol}")
endforeach()
