# What is installed, in two components: kuvcv_runtime is what programs need to run, kuvcv_development what building them takes.
include(CMakePackageConfigHelpers)

install(TARGETS kuvcv_shared kuvcv_static EXPORT kuvcvTargets
  LIBRARY COMPONENT kuvcv_runtime NAMELINK_COMPONENT kuvcv_development
  ARCHIVE COMPONENT kuvcv_development)
install(FILES include/kuvcv.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT kuvcv_development)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/kuvcv)
install(EXPORT kuvcvTargets NAMESPACE kuvcv:: DESTINATION ${package_dir} COMPONENT kuvcv_development)
configure_package_config_file(cmake/kuvcvConfig.cmake.in ${CMAKE_CURRENT_BINARY_DIR}/kuvcvConfig.cmake
  INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/kuvcvConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/kuvcvConfig.cmake ${CMAKE_CURRENT_BINARY_DIR}/kuvcvConfigVersion.cmake
  DESTINATION ${package_dir} COMPONENT kuvcv_development)

# The file finds its prefix from where it lies, so an installed tree can be moved; absolute directories stay absolute.
file(RELATIVE_PATH KUV_PC_PREFIX /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
foreach(kind IN ITEMS INCLUDEDIR LIBDIR)
  if(IS_ABSOLUTE "${CMAKE_INSTALL_${kind}}")
    set(KUV_PC_${kind} "${CMAKE_INSTALL_${kind}}")
  else()
    set(KUV_PC_${kind} "\${prefix}/${CMAKE_INSTALL_${kind}}")
  endif()
endforeach()
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
  file(RELATIVE_PATH KUV_PC_PREFIX ${CMAKE_INSTALL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
endif()
configure_file(cmake/kuvcv.pc.in ${CMAKE_CURRENT_BINARY_DIR}/kuvcv.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/kuvcv.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT kuvcv_development)
