# cmake -DROOT=... -P CheckFigures.cmake
# README.md shows the figures of docs/performance.md, and those are of the run in docs/performance/results.json.
cmake_minimum_required(VERSION 3.25)
foreach(file IN ITEMS README.md docs/performance.md)
  file(READ ${ROOT}/${file} text)
  string(REGEX MATCH "<!-- begin short -->\n(.*)<!-- end short -->" found "${text}")
  set(short_${file} "${CMAKE_MATCH_1}")
endforeach()
if(NOT "${short_README.md}" MATCHES "\n[|] get integer [|]" OR
   NOT "${short_README.md}" STREQUAL "${short_docs/performance.md}")
  message(SEND_ERROR "README.md and docs/performance.md show different figures: make bench-peers writes both")
endif()

# The row of a get, as the run has it.
file(READ ${ROOT}/docs/performance/results.json json)
string(JSON first GET "${json}" rows 0 work)
string(JSON least GET "${json}" rows 0 ns file 0)
string(REGEX REPLACE "[.].*" "" least "${least}")
math(EXPR next "${least} + 1")
if(NOT first STREQUAL "get integer" OR NOT "${short_README.md}" MATCHES
   "\n[|] get integer [|] (${least}|${next}) [|]")
  message(SEND_ERROR "README.md does not show the get of results.json, ${least}")
endif()
