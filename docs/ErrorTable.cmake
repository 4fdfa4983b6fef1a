# Writes the table of error codes for the API reference: code and text from
# the catalogue's factories (src/Utils/KVRErrors.cpp), what each means at
# the till from the comment on its declaration (include/kovra/KVRErrors.h).
#   cmake -DSOURCE_DIR=<source> -DOUTPUT=<errors.md> -P docs/ErrorTable.cmake
cmake_minimum_required(VERSION 3.20)

file(READ ${SOURCE_DIR}/src/Utils/KVRErrors.cpp catalogue)
file(STRINGS ${SOURCE_DIR}/include/kovra/KVRErrors.h header)
string(REGEX MATCH "KovraDomain = \"([^\"]*)\"" _ "${catalogue}")
set(domain "${CMAKE_MATCH_1}")

# The comment lines gathered above each factory declaration.
set(comment "")
foreach(line IN LISTS header)
  if(line MATCHES "^ *///  *(.*)$")
    string(APPEND comment " ${CMAKE_MATCH_1}")
  elseif(line MATCHES "^ *static KVRError ([A-Za-z]+)\\(\\);")
    string(STRIP "${comment}" meaning_${CMAKE_MATCH_1})
    set(comment "")
  else()
    set(comment "")
  endif()
endforeach()

string(REGEX MATCHALL "KVRError KVRErrors::[A-Za-z]+\\(\\) *{[^}]*described\\([0-9]+, *\"[^\"]*\"" factories "${catalogue}")
set(rows "")
set(count 0)
foreach(factory IN LISTS factories)
  string(REGEX MATCH "KVRErrors::([A-Za-z]+)\\(\\)[^}]*described\\(([0-9]+), *\"([^\"]*)\"" _ "${factory}")
  set(name ${CMAKE_MATCH_1})
  if(NOT DEFINED meaning_${name} OR meaning_${name} STREQUAL "")
    message(FATAL_ERROR "KVRErrors::${name} has no comment saying what it means at the till")
  endif()
  string(APPEND rows "| ${CMAKE_MATCH_2} | `${name}` | \"${CMAKE_MATCH_3}\" | ${meaning_${name}} |\n")
  math(EXPR count "${count} + 1")
endforeach()
if(count LESS 20)
  message(FATAL_ERROR "only ${count} factories found in KVRErrors.cpp")
endif()

file(WRITE ${OUTPUT} "# Error codes {#errorcodes}

Every failure a completion reports is a `KVRError`. Errors of the library's
catalogue have the domain `KovraDomain` (\"${domain}\") and are made by
`KVRErrors`; compare them with `==` (domain and code), never by their text,
since several codes share one. The last column is what the error means for the
cashier at the till.

| Code | Factory | Text (`localizedDescription()`) | At the till |
|---|---|---|---|
${rows}
Transport errors of the host exchange have the domain \"NSURLErrorDomain\" and
the URL-loading codes: -1001 timed out, -1003 host not found, -1004 cannot
connect, -1009 not connected, -1103 reply too large, -1200 secure connection
failed. At the till they all mean the acquirer could not be reached: check the
network and try again.
")
