include(CMakePackageConfigHelpers)

# Components, one Debian package each (cmake/KovraPackaging.cmake):
#   runtime -> libkovra0      the shared library
#   dev     -> libkovra-dev   headers, static library, CMake package, kovra.pc
#   tools   -> kovra-tools    kovra and the two emulators (tools/*/CMakeLists.txt)
install(TARGETS kovra_shared EXPORT KovraTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT dev
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
# The static library has an export set of its own: it alone needs the private
# dependencies' development files, so only it asks for them.
install(TARGETS kovra_static EXPORT KovraStaticTargets
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY include/kovra DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT dev)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/include/kovra/KVRVersion.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/kovra
        COMPONENT dev)

set(KOVRA_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/Kovra)
install(EXPORT KovraTargets NAMESPACE Kovra:: DESTINATION ${KOVRA_CMAKE_DIR} COMPONENT dev)
install(EXPORT KovraStaticTargets NAMESPACE Kovra:: DESTINATION ${KOVRA_CMAKE_DIR} COMPONENT dev)
configure_package_config_file(cmake/KovraConfig.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/KovraConfig.cmake
  INSTALL_DESTINATION ${KOVRA_CMAKE_DIR})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/KovraConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/KovraConfig.cmake ${CMAKE_CURRENT_BINARY_DIR}/KovraConfigVersion.cmake
  DESTINATION ${KOVRA_CMAKE_DIR} COMPONENT dev)

# kovra.pc finds the prefix from its own place (${pcfiledir}), so it is right
# wherever the files are unpacked or installed, multiarch library directories
# included.
set(KOVRA_PC_DIR ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
function(kovra_pc_path variable dir)
  if(IS_ABSOLUTE "${dir}")
    set(${variable} "${dir}" PARENT_SCOPE)
  else()
    file(RELATIVE_PATH relative /prefix/${KOVRA_PC_DIR} /prefix/${dir})
    string(REGEX REPLACE "/$" "" relative "${relative}")
    set(${variable} "\${pcfiledir}/${relative}" PARENT_SCOPE)
  endif()
endfunction()
kovra_pc_path(KOVRA_PC_LIBDIR ${CMAKE_INSTALL_LIBDIR})
kovra_pc_path(KOVRA_PC_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR})
configure_file(cmake/kovra.pc.in ${CMAKE_CURRENT_BINARY_DIR}/kovra.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/kovra.pc DESTINATION ${KOVRA_PC_DIR} COMPONENT dev)

# The Python package (component "python"), into Debian's dist-packages of the
# prefix, with the installed library's path so that it needs no loader setup.
# That path is written at install time, so that `cmake --install --prefix`
# and DESTDIR give the right one.
set(KOVRA_PYTHON_INSTALL_DIR "lib/python3/dist-packages" CACHE STRING
    "Where the Python package kovra is installed, relative to the prefix")
install(DIRECTORY python/kovra DESTINATION ${KOVRA_PYTHON_INSTALL_DIR} COMPONENT python
        PATTERN __pycache__ EXCLUDE)
install(CODE "
  set(library \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/libkovra.so.${PROJECT_VERSION_MAJOR}\")
  file(WRITE \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${KOVRA_PYTHON_INSTALL_DIR}/kovra/_installed.py\"
       \"# Written at install time: where the installed libkovra is.\\nLIBRARY = \\\"\${library}\\\"\\n\")
  " COMPONENT python)
