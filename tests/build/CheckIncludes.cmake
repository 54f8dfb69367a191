# cmake -DROOT=... -P CheckIncludes.cmake
# Includes of our own headers point one way: framework -> front end -> the two trees -> store -> shared headers ->
# platform. The trees never include each other, and what is below knows nothing of what is above.

set(platform "^platform/[^/]+\\.h$")
set(shared_names
  "(Array|KeyInfo|List|NameList|RCEString|RegistryInfo|RegistryInterface|RegistryStatus|Rights|Stack|UserId|Value|ValueCheck)")
set(shared "^registry/${shared_names}\\.h$")

# Sets `allowed` to the patterns of what the file may include; nothing for a file of no known layer.
function(allowed_includes file)
  if(file MATCHES "^platform/posix/")
    set(patterns ${platform} "^platform/posix/")
  elseif(file MATCHES "^platform/[^/]+$")
    set(patterns ${platform})
  elseif(file MATCHES "^registry/${shared_names}\\.(h|cpp)$")
    set(patterns ${platform} ${shared})
  elseif(file MATCHES "^registry/store/")
    set(patterns ${platform} ${shared} "^registry/store/")
  elseif(file MATCHES "^registry/(filetree|memtree)/")
    set(patterns ${platform} ${shared} "^registry/store/" "^registry/${CMAKE_MATCH_1}/")
  elseif(file MATCHES "^registry/[^/]+$")
    set(patterns ${platform} "^registry/")
  elseif(file MATCHES "^framework/")
    set(patterns ${platform} "^registry/[^/]+\\.h$" "^framework/")
  endif()
  set(allowed ${patterns} PARENT_SCOPE)
endfunction()

function(check_file file)
  allowed_includes(${file})
  file(STRINGS ${ROOT}/${file} lines REGEX "^[ \t]*#[ \t]*include[ \t]*\"")
  foreach(line IN LISTS lines)
    string(REGEX REPLACE "^[^\"]*\"([^\"]*)\".*$" "\\1" header "${line}")
    set(good FALSE)
    foreach(pattern IN LISTS allowed)
      if(header MATCHES "${pattern}")
        set(good TRUE)
      endif()
    endforeach()
    if(NOT good)
      message(SEND_ERROR "${file} must not include ${header}")
    endif()
  endforeach()
endfunction()

file(GLOB_RECURSE files RELATIVE ${ROOT}
  ${ROOT}/framework/*.h ${ROOT}/framework/*.cpp ${ROOT}/platform/*.h ${ROOT}/platform/*.cpp
  ${ROOT}/registry/*.h ${ROOT}/registry/*.cpp)
if(NOT files)
  message(FATAL_ERROR "No sources in ${ROOT}")
endif()
foreach(file IN LISTS files)
  check_file(${file})
endforeach()
