# Three Debian packages: vesk-cli, which needs no display, vesk, the window, and python3-vesk; both need the first.
# `cpack` in the build folder makes them.
set(packages cli python)
if(TARGET vesk)
  list(APPEND packages gui)
endif()
set(cli_package vesk-cli)
set(gui_package vesk)
set(python_package python3-vesk)

# Licence and changelogs, in a separate folder per package. Left out of `cmake --install`.
gzipped(changelog ${PROJECT_SOURCE_DIR}/CHANGELOG.md)
foreach(component IN LISTS packages)
  set(VESK_PACKAGE ${${component}_package})
  configure_file(debian/changelog.in ${VESK_PACKAGE}/changelog.Debian @ONLY)
  gzipped(debian_changelog ${CMAKE_CURRENT_BINARY_DIR}/${VESK_PACKAGE}/changelog.Debian)
  set(folder ${CMAKE_INSTALL_DATADIR}/doc/${VESK_PACKAGE})
  install(FILES debian/copyright ${debian_changelog} DESTINATION ${folder} COMPONENT ${component} EXCLUDE_FROM_ALL)
  install(FILES ${changelog} DESTINATION ${folder} COMPONENT ${component} EXCLUDE_FROM_ALL RENAME changelog.gz)
endforeach()

install(FILES debian/vesk-cli.lintian-overrides DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides COMPONENT cli
  RENAME ${cli_package} EXCLUDE_FROM_ALL)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vesk)
set(CPACK_PACKAGE_VENDOR "Vesk developers")
set(CPACK_PACKAGE_CONTACT "Vesk developers <vesk-developers@example.org>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_COMPONENTS_ALL ${packages})
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_VERBATIM_VARIABLES ON)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SOURCE vesk)
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # otherwise it becomes the first line of both descriptions
set(about "Vesk models the water quality of a river, lake or estuary over time.
The water body is divided into segments; flows, exchanges, loads,
boundaries, constants and time functions describe what happens in them, and
an engine, a separate shared library, computes the concentrations.")
set(CPACK_DEBIAN_CLI_PACKAGE_NAME ${cli_package})
set(CPACK_DEBIAN_CLI_DESCRIPTION "water-quality models of surface water, without a display
${about}
.
This package contains the console runner vesk-run, the data file tool vki, the
results tool vesk-results, the bundled engine, the model catalogue, a sample
river and the header for engines of other authors.")
set(CPACK_DEBIAN_CLI_PACKAGE_RECOMMENDS python3)
set(CPACK_DEBIAN_CLI_PACKAGE_SUGGESTS netcdf-bin)
set(CPACK_DEBIAN_GUI_PACKAGE_NAME ${gui_package})
set(CPACK_DEBIAN_GUI_DESCRIPTION "water-quality models of surface water, desktop program
${about}
.
This package contains the desktop program for building and running models
and viewing their results.")
set(CPACK_DEBIAN_GUI_PACKAGE_RECOMMENDS "graphviz, qt6-wayland, xdg-utils")
set(CPACK_COMPONENT_GUI_DEPENDS cli)
set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME ${python_package})
set(CPACK_DEBIAN_PYTHON_DESCRIPTION "water-quality models of surface water, from Python
${about}
.
This package has the Python module vesk, which runs models, many at a time,
and reads and changes data files and results.")
set(CPACK_DEBIAN_PYTHON_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "python3 (>= 3.9)")
set(CPACK_DEBIAN_PYTHON_PACKAGE_RECOMMENDS "python3-netcdf4, python3-xarray")
set(CPACK_DEBIAN_PYTHON_PACKAGE_SUGGESTS "parallel, python3-distributed, python3-pandas, python3-scipy")
set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA
  "${CMAKE_CURRENT_SOURCE_DIR}/debian/python3-vesk/postinst;${CMAKE_CURRENT_SOURCE_DIR}/debian/python3-vesk/prerm")
set(CPACK_COMPONENT_PYTHON_DEPENDS cli)

include(CPack)
