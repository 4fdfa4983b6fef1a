# libkovra.so exports the public API and nothing else: every defined dynamic
# symbol belongs to a class, namespace or constant that a header of
# include/kovra marks KOVRA_API, or is a kovra_* function of the C interface.
#
#   cmake -DLIBRARY=<libkovra.so> -DINCLUDE_DIR=<include/kovra> -DGENERATED_INCLUDE_DIR=<build/include/kovra> -P tests/install/ExportedSymbols.cmake
cmake_minimum_required(VERSION 3.20)

file(GLOB headers ${INCLUDE_DIR}/*.h ${GENERATED_INCLUDE_DIR}/*.h)
set(public)
foreach(header IN LISTS headers)
  file(READ ${header} text)
  string(REGEX MATCHALL "(class|struct) KOVRA_API [A-Za-z0-9_]+" matches "${text}")
  string(REGEX REPLACE "(class|struct) KOVRA_API " "" matches "${matches}")
  list(APPEND public ${matches})
  # Namespaces of exported free functions, and exported constants.
  string(REGEX MATCHALL "namespace [A-Za-z0-9_]+ {[^}]*KOVRA_API" matches "${text}")
  string(REGEX REPLACE "namespace ([A-Za-z0-9_]+) {[^}]*KOVRA_API" "\\1" matches "${matches}")
  list(APPEND public ${matches})
  string(REGEX MATCHALL "extern KOVRA_API [^;(]*[ *][A-Za-z0-9_]+(\\[\\])?;" matches "${text}")
  string(REGEX REPLACE "extern KOVRA_API [^;(]*[ *]([A-Za-z0-9_]+)(\\[\\])?;" "\\1" matches "${matches}")
  list(APPEND public ${matches})
endforeach()
list(REMOVE_DUPLICATES public)
list(JOIN public "|" alternatives)
set(allowed "^((typeinfo|typeinfo name|vtable|VTT) for |(non-)?virtual thunk to )?(${alternatives})(::|<|$)|^kovra_")

execute_process(COMMAND nm -D --defined-only ${LIBRARY} COMMAND c++filt
                RESULT_VARIABLE rc OUTPUT_VARIABLE listing ERROR_VARIABLE err)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "nm failed: ${err}")
endif()
string(REGEX REPLACE "\n$" "" listing "${listing}")
string(REPLACE "\n" ";" lines "${listing}")
set(foreign)
set(count 0)
foreach(line IN LISTS lines)
  # "<address> <type> <name>"; absolute symbols (type A) are linker markers.
  if(NOT line MATCHES "^[0-9a-f]+ ([A-Za-z]) (.*)$" OR CMAKE_MATCH_1 STREQUAL "A")
    continue()
  endif()
  set(name "${CMAKE_MATCH_2}")
  math(EXPR count "${count} + 1")
  if(NOT name MATCHES "${allowed}")
    string(APPEND foreign "  ${name}\n")
  endif()
endforeach()
if(foreign)
  message(FATAL_ERROR "libkovra.so exports symbols outside the public API:\n${foreign}")
endif()
if(NOT listing MATCHES "KVRErrors::invalidAmount\\(\\)" OR NOT listing MATCHES "typeinfo for KVRException")
  message(FATAL_ERROR "libkovra.so lacks public symbols; its ${count} exports:\n${listing}")
endif()
message(STATUS "libkovra.so: ${count} exported symbols, all of the public API (${alternatives})")
