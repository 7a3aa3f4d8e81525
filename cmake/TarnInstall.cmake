# Library, headers, the CMake package (find_package(Tarn) gives Tarn::tarn, Tarn::static and the adapters), the pkg-config
# file.
include(CMakePackageConfigHelpers)

set_target_properties(tarn_static PROPERTIES EXPORT_NAME static)
install(TARGETS tarn tarn_static EXPORT TarnTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/tarn DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/Tarn)
install(EXPORT TarnTargets NAMESPACE Tarn:: DESTINATION ${package_dir})
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/TarnConfig.cmake.in ${PROJECT_BINARY_DIR}/TarnConfig.cmake
  INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/TarnConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/TarnConfig.cmake ${PROJECT_BINARY_DIR}/TarnConfigVersion.cmake
  DESTINATION ${package_dir})

# From the folder of tarn.pc, so that the installed tree may be moved; unless the libraries have a place of their own.
if(IS_ABSOLUTE ${CMAKE_INSTALL_LIBDIR})
  set(pc_prefix ${CMAKE_INSTALL_PREFIX})
else()
  file(RELATIVE_PATH pc_to_prefix /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
  string(REGEX REPLACE "/$" "" pc_prefix "\${pcfiledir}/${pc_to_prefix}")
endif()
foreach(dir LIBDIR INCLUDEDIR)
  if(IS_ABSOLUTE ${CMAKE_INSTALL_${dir}})
    set(pc_${dir} ${CMAKE_INSTALL_${dir}})
  else()
    set(pc_${dir} "\${prefix}/${CMAKE_INSTALL_${dir}}")
  endif()
endforeach()
get_filename_component(pc_blas_dir ${OpenBLASSerial_LIBRARY} DIRECTORY)
configure_file(${CMAKE_CURRENT_LIST_DIR}/tarn.pc.in ${PROJECT_BINARY_DIR}/tarn.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/tarn.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
