# Debian packages, one per install component (scripts/package runs cpack).
# Included last, once every install rule is known: a component only some
# builds have (python, from its own folder) gets its package when its rules
# exist and is simply absent otherwise.
get_cmake_property(KOVRA_INSTALL_COMPONENTS COMPONENTS)
list(REMOVE_ITEM KOVRA_INSTALL_COMPONENTS Unspecified)

# Every package carries the licence where Debian looks for it.
foreach(component IN LISTS KOVRA_INSTALL_COMPONENTS)
  set(package_runtime libkovra0)
  set(package_dev libkovra-dev)
  set(package_tools kovra-tools)
  set(package_python python3-kovra)
  if(DEFINED package_${component})
    install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package_${component}}
            RENAME copyright COMPONENT ${component})
  endif()
endforeach()

set(CPACK_GENERATOR DEB)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL ${KOVRA_INSTALL_COMPONENTS})
set(CPACK_PACKAGE_NAME kovra)
set(CPACK_PACKAGE_VENDOR Kovra)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_HOMEPAGE_URL "https://kovra.example.com")
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "Kovra developers <dev@kovra.example.com>")
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
set(CPACK_STRIP_FILES ON)
# Run-time dependencies of the ELF files come from dpkg-shlibdeps.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(KOVRA_DEB_VERSION "${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libkovra0)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "Kovra card-payment library
 Card payments for Brazil: drives an ABECS PIN pad over a serial, Bluetooth or
 TCP link and talks ISO 20022 XML over HTTPS to the acquirer; keeps merchants,
 EMV tables and transactions in SQLite.")

set(CPACK_DEBIAN_DEV_PACKAGE_NAME libkovra-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "libkovra0 (= ${KOVRA_DEB_VERSION})")
# The static library links these; the shared one needs none of them.
set(CPACK_DEBIAN_DEV_PACKAGE_SUGGESTS
    "libsqlite3-dev, zlib1g-dev, libcurl4-openssl-dev, libssl-dev, nlohmann-json3-dev, libplist-dev, libserialport-dev")
set(CPACK_DEBIAN_DEV_DESCRIPTION "Kovra card-payment library: development files
 Headers, the static library, the CMake package (find_package(Kovra)) and
 kovra.pc for building applications with the Kovra card-payment library.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME kovra-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOLS_DESCRIPTION "Kovra card-payment tool and emulators
 kovra runs the library's operations from a shell (enrolment, tables, sales,
 cancellations, receipts, a demo). kovra-pinpad-sim emulates an ABECS PIN pad
 and kovra-acquirer-sim an HTTPS acquirer on the local machine.")

set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-kovra)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "python3, libkovra0 (= ${KOVRA_DEB_VERSION})")
set(CPACK_DEBIAN_PYTHON_DESCRIPTION "Kovra card-payment library: Python bindings
 The Kovra card-payment library for Python 3, over its C interface.")

include(CPack)
