# What `cmake --install` puts where, and what others find it by.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

# core/fpga.h and what it includes: the headers that are installed, and documented by `docs`.
set(IRMCORE_PUBLIC_HEADERS
  calib/modify.h
  core/fpga.h
  core/truncate.h
  core/vsk.h
  device/fpgabottom.h
  device/mutex.h
  device/records.h
  device/selftest.h
  device/serial.h
  display/isohandler.h
  display/levelspan.h
  display/palette.h
  measure/calctrans.h
  measure/irpara.h
  measure/model.h
  measure/reading.h
  measure/temphandler.h
  measure/tempinfotab.h)

# Hosts include <irmcore/fpga.h>, from the build tree too.
file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/include/irmcore/fpga.h
     CONTENT "#include \"${PROJECT_SOURCE_DIR}/core/fpga.h\"\n")
file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/install/fpga.h
     CONTENT "#include \"core/fpga.h\"\n")
target_include_directories(irmcore PUBLIC
  $<BUILD_INTERFACE:${PROJECT_BINARY_DIR}/include> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
target_compile_features(irmcore PUBLIC cxx_std_17)
set_target_properties(irmcore PROPERTIES
  VERSION ${PROJECT_VERSION}
  SOVERSION ${PROJECT_VERSION_MAJOR})

install(FILES ${PROJECT_BINARY_DIR}/install/fpga.h
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/irmcore)
foreach(header IN LISTS IRMCORE_PUBLIC_HEADERS)
  get_filename_component(room ${header} DIRECTORY)
  install(FILES ${PROJECT_SOURCE_DIR}/${header}
          DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/irmcore/${room})
endforeach()

# The command finds the library from where it lies itself, so that the prefix can be moved.
file(RELATIVE_PATH from_bin_to_lib ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
set_target_properties(irmcore-command PROPERTIES INSTALL_RPATH "$ORIGIN/${from_bin_to_lib}")
install(TARGETS irmcore EXPORT irmcore)
install(TARGETS irmcore-command)
if(TARGET irmcore-view)
  set_target_properties(irmcore-view PROPERTIES INSTALL_RPATH "$ORIGIN/${from_bin_to_lib}")
  install(TARGETS irmcore-view)
  install(FILES apps/view/irmcore-view.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
endif()
if(TARGET irmcore-sim)
  install(TARGETS irmcore-sim LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/irmcore)
endif()

# For CMake.
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/irmcore)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/irmcoreConfig.cmake.in
  ${PROJECT_BINARY_DIR}/install/irmcoreConfig.cmake INSTALL_DESTINATION ${package_dir}
  NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/install/irmcoreConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/install/irmcoreConfig.cmake
              ${PROJECT_BINARY_DIR}/install/irmcoreConfigVersion.cmake
        DESTINATION ${package_dir})
install(EXPORT irmcore FILE irmcoreTargets.cmake NAMESPACE irmcore:: DESTINATION ${package_dir})

# For pkg-config. A Qt that wants -fPIC of its hosts tells CMake only.
get_target_property(qt_options Qt${QT_VERSION_MAJOR}::Core INTERFACE_COMPILE_OPTIONS)
set(pc_pic "")
if("-fPIC" IN_LIST qt_options)
  set(pc_pic " -fPIC")
endif()
file(RELATIVE_PATH from_pc_to_prefix ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" from_pc_to_prefix ${from_pc_to_prefix})
foreach(dir LIBDIR INCLUDEDIR)
  file(RELATIVE_PATH pc_${dir} ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_${dir}})
endforeach()
configure_file(${PROJECT_SOURCE_DIR}/cmake/irmcore.pc.in ${PROJECT_BINARY_DIR}/install/irmcore.pc
               @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/install/irmcore.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# Man pages, made from what the commands say of themselves: for that they have to run here.
find_program(IRMCORE_HELP2MAN help2man)
if(IRMCORE_HELP2MAN AND NOT CMAKE_CROSSCOMPILING)
  if(TARGET irmcore-view)
    set(viewer $<TARGET_FILE:irmcore-view>)
    set(viewer_target irmcore-view)
  endif()
  add_custom_command(OUTPUT ${PROJECT_BINARY_DIR}/man/stamp
    COMMAND ${PROJECT_SOURCE_DIR}/man/make-pages ${IRMCORE_HELP2MAN} ${PROJECT_VERSION}
            ${PROJECT_BINARY_DIR}/man $<TARGET_FILE:irmcore-command> ${viewer}
    DEPENDS irmcore-command ${viewer_target} man/make-pages man/irmcore.h2m man/irmcore-check.h2m man/irmcore-demo.h2m
            man/irmcore-calibrate.h2m man/irmcore-diff.h2m man/irmcore-explain.h2m
            man/irmcore-measure.h2m man/irmcore-plot.h2m man/irmcore-view.h2m
    COMMENT "Man pages" VERBATIM)
  add_custom_target(man ALL DEPENDS ${PROJECT_BINARY_DIR}/man/stamp)
  install(DIRECTORY ${PROJECT_BINARY_DIR}/man/ DESTINATION ${CMAKE_INSTALL_MANDIR}/man1
          FILES_MATCHING PATTERN "*.1")
else()
  message(STATUS "irmcore: no man pages, they take help2man and a build for this machine")
endif()
