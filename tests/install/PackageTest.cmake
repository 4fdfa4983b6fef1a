# The Debian packages as an application developer meets them: unpacked into a
# throwaway root with dpkg -x, then the examples built against that root once
# with CMake (find_package(Kovra)) and once with pkg-config, and one of them
# run with the root's shared library.
#
#   cmake -DSOURCE_DIR=<source> -DWORK_DIR=<scratch>
#         (-DBUILD_DIR=<build tree to run cpack in> | -DPACKAGE_DIR=<folder of .deb files>)
#         -P tests/install/PackageTest.cmake
cmake_minimum_required(VERSION 3.20)

function(run)
  cmake_parse_arguments(RUN "" "OUTPUT" "COMMAND" ${ARGN})
  execute_process(COMMAND ${RUN_COMMAND} WORKING_DIRECTORY ${WORK_DIR}
                  RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT rc EQUAL 0)
    list(JOIN RUN_COMMAND " " shown)
    message(FATAL_ERROR "${shown} failed (${rc}):\n${out}\n${err}")
  endif()
  if(RUN_OUTPUT)
    string(STRIP "${out}" out)
    set(${RUN_OUTPUT} "${out}" PARENT_SCOPE)
  endif()
endfunction()

file(REMOVE_RECURSE ${WORK_DIR})
file(MAKE_DIRECTORY ${WORK_DIR})
if(NOT PACKAGE_DIR)
  set(PACKAGE_DIR ${WORK_DIR}/packages)
  run(COMMAND cpack -G DEB --config ${BUILD_DIR}/CPackConfig.cmake -B ${PACKAGE_DIR})
endif()

# One package per component, the -dev one tied to this very runtime.
file(GLOB debs ${PACKAGE_DIR}/*.deb)
set(names)
foreach(deb IN LISTS debs)
  run(COMMAND dpkg-deb -f ${deb} Package OUTPUT name)
  list(APPEND names ${name})
  set(deb_${name} ${deb})
endforeach()
foreach(expected libkovra0 libkovra-dev kovra-tools python3-kovra)
  if(NOT expected IN_LIST names)
    message(FATAL_ERROR "no ${expected} package among: ${names}")
  endif()
endforeach()
run(COMMAND dpkg-deb -f ${deb_libkovra0} Version OUTPUT version)
run(COMMAND dpkg-deb -f ${deb_libkovra-dev} Depends OUTPUT depends)
if(NOT depends MATCHES "libkovra0 \\(= ${version}\\)")
  message(FATAL_ERROR "libkovra-dev depends on \"${depends}\", not on libkovra0 ${version}")
endif()
run(COMMAND dpkg-deb -c ${deb_libkovra0} OUTPUT runtime_files)
if(runtime_files MATCHES "/include/|\\.a\n|libkovra\\.so -> ")
  message(FATAL_ERROR "libkovra0 holds development files:\n${runtime_files}")
endif()
run(COMMAND dpkg-deb -c ${deb_kovra-tools} OUTPUT tool_files)
foreach(file bin/kovra bin/kovra-pinpad-sim bin/kovra-acquirer-sim share/bash-completion/completions/kovra)
  if(NOT tool_files MATCHES "/usr/${file}\n")
    message(FATAL_ERROR "kovra-tools lacks /usr/${file}:\n${tool_files}")
  endif()
endforeach()

# The Python package: the module, and the installed library's path written
# for it at packaging time.
run(COMMAND dpkg-deb -c ${deb_python3-kovra} OUTPUT python_files)
foreach(file kovra/__init__.py kovra/_installed.py)
  if(NOT python_files MATCHES "/usr/lib/python3/dist-packages/${file}\n")
    message(FATAL_ERROR "python3-kovra lacks ${file}:\n${python_files}")
  endif()
endforeach()

set(root ${WORK_DIR}/root)
foreach(deb IN LISTS debs)
  run(COMMAND dpkg -x ${deb} ${root})
endforeach()
file(GLOB pc_files ${root}/usr/lib/pkgconfig/kovra.pc ${root}/usr/lib/*/pkgconfig/kovra.pc)
list(LENGTH pc_files found)
if(NOT found EQUAL 1)
  message(FATAL_ERROR "expected one kovra.pc under ${root}/usr/lib, found: ${pc_files}")
endif()
get_filename_component(pc_dir ${pc_files} DIRECTORY)
get_filename_component(libdir ${pc_dir} DIRECTORY)

# CMake: the shared target needs none of the private dependencies, so the
# examples configure with every one of them made unfindable.
set(no_private_dependencies)
foreach(package Threads SQLite3 ZLIB CURL OpenSSL nlohmann_json PkgConfig)
  list(APPEND no_private_dependencies -DCMAKE_DISABLE_FIND_PACKAGE_${package}=ON)
endforeach()
run(COMMAND ${CMAKE_COMMAND} -S ${SOURCE_DIR}/examples -B ${WORK_DIR}/cmake-examples
            -DCMAKE_PREFIX_PATH=${root}/usr -DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF ${no_private_dependencies}
            "-DCMAKE_CXX_FLAGS=${CONSUMER_FLAGS}" "-DCMAKE_EXE_LINKER_FLAGS=${CONSUMER_FLAGS}")
file(STRINGS ${WORK_DIR}/cmake-examples/CMakeCache.txt kovra_dir REGEX "^Kovra_DIR:")
if(NOT kovra_dir MATCHES "=${root}/usr/lib/")
  message(FATAL_ERROR "find_package(Kovra) took ${kovra_dir}, not the unpacked root")
endif()
run(COMMAND ${CMAKE_COMMAND} --build ${WORK_DIR}/cmake-examples)

# pkg-config: only the root's own .pc files, so kovra.pc may not lean on any
# other; -std=c++17, the oldest standard the headers allow.
set(pkg_config ${CMAKE_COMMAND} -E env PKG_CONFIG_LIBDIR=${pc_dir} PKG_CONFIG_PATH= pkg-config)
run(COMMAND ${pkg_config} --cflags kovra OUTPUT cflags)
run(COMMAND ${pkg_config} --libs kovra OUTPUT libs)
string(REGEX REPLACE "^-I" "" includedir "${cflags}")
string(REGEX REPLACE "^-L([^ ]+) -lkovra$" "\\1" linkdir "${libs}")
if(NOT EXISTS ${includedir}/kovra/Kovra.h OR NOT EXISTS ${linkdir}/libkovra.so)
  message(FATAL_ERROR "kovra.pc gives \"${cflags}\" and \"${libs}\", which miss the root's files")
endif()
separate_arguments(cflags UNIX_COMMAND "${cflags}")
separate_arguments(libs UNIX_COMMAND "${libs}")
separate_arguments(consumer_flags UNIX_COMMAND "${CONSUMER_FLAGS}")
foreach(example sale enrolment cancellation abort)
  run(COMMAND c++ -std=c++17 ${consumer_flags} ${cflags} ${SOURCE_DIR}/examples/${example}.cpp ${libs}
              -o ${WORK_DIR}/pkg-config-${example})
endforeach()

# The sale example with the root's library and a PIN pad that is not there:
# the catalogue error and exit code 1.
file(WRITE ${WORK_DIR}/Info.plist "<?xml version=\"1.0\" encoding=\"UTF-8\"?>
<plist version=\"1.0\"><dict>
<key>Kovra Pinpad</key><string>${WORK_DIR}/no-pinpad</string>
<key>Kovra Pinpad Write Pause</key><real>0</real>
</dict></plist>
")
execute_process(COMMAND ${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=${libdir} KOVRA_INFO_PLIST=${WORK_DIR}/Info.plist
                        KOVRA_DATA_DIR=${WORK_DIR}/data ${WORK_DIR}/pkg-config-sale
                RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
if(NOT rc EQUAL 1 OR NOT err MATCHES "error 303: Connection to Pinpad not found.")
  message(FATAL_ERROR "the sale example without a PIN pad ended with ${rc}:\n${out}\n${err}")
endif()
file(GLOB installed_py ${root}/usr/lib/python3/dist-packages/kovra/_installed.py)
file(READ ${installed_py} installed_py)
if(NOT installed_py MATCHES "LIBRARY = \"/usr/lib/[^\"]*libkovra\\.so\\.0\"")
  message(FATAL_ERROR "python3-kovra looks for the library elsewhere than /usr/lib:\n${installed_py}")
endif()
message(STATUS "${names} ${version}: examples built with CMake and pkg-config against ${root}")
