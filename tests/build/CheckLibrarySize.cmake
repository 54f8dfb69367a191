# A library without its symbols is at most LIMIT bytes: cmake -DSTRIP=... -DLIBRARY=... -DLIMIT=... -DCOPY=... -P
execute_process(COMMAND ${STRIP} -o ${COPY} ${LIBRARY} COMMAND_ERROR_IS_FATAL ANY)
file(SIZE ${COPY} size)
file(REMOVE ${COPY})
if(size GREATER LIMIT)
  message(FATAL_ERROR "${LIBRARY} has ${size} bytes without its symbols, ${LIMIT} are meant to be enough")
endif()
message(STATUS "${size} of ${LIMIT} bytes")
