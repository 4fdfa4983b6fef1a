include(CMakePackageConfigHelpers)

install(TARGETS kovra_static kovra_shared EXPORT KovraTargets
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY include/kovra DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/include/kovra/KVRVersion.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/kovra)

install(EXPORT KovraTargets NAMESPACE Kovra:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Kovra)
configure_package_config_file(cmake/KovraConfig.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/KovraConfig.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Kovra)
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/KovraConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/KovraConfig.cmake ${CMAKE_CURRENT_BINARY_DIR}/KovraConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Kovra)

configure_file(cmake/kovra.pc.in ${CMAKE_CURRENT_BINARY_DIR}/kovra.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/kovra.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

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
