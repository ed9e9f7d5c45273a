# Installs libraries, headers, the command line, a CMake package and a pkg-config file.

include(CMakePackageConfigHelpers)

get_property(libraries GLOBAL PROPERTY ZULTAV_LIBRARIES)
install(TARGETS ${libraries} EXPORT ZULTavNumbersTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(TARGETS zultav RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
file(RELATIVE_PATH zultav_lib_from_bin /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
set_target_properties(zultav PROPERTIES INSTALL_RPATH "$ORIGIN/${zultav_lib_from_bin}")

# Public headers, and those internal ones that they cannot do without.
set(zultav_include ${CMAKE_INSTALL_INCLUDEDIR}/zultav)
foreach(folder framework/base framework/intervals framework/solver framework/engine
        framework/calculator framework/search numbers)
  file(GLOB headers CONFIGURE_DEPENDS ${folder}/*.h)
  install(FILES ${headers} DESTINATION ${zultav_include}/${folder})
endforeach()
install(FILES framework/intervals/detail/Level.h framework/intervals/detail/PackedArithmetic.h
        DESTINATION ${zultav_include}/framework/intervals/detail)
install(FILES numbers/detail/Slots.h DESTINATION ${zultav_include}/numbers/detail)

set(package_directory ${CMAKE_INSTALL_LIBDIR}/cmake/ZULTavNumbers)
install(EXPORT ZULTavNumbersTargets NAMESPACE ZULTavNumbers:: DESTINATION ${package_directory})
configure_package_config_file(cmake/ZULTavNumbersConfig.cmake.in ZULTavNumbersConfig.cmake
                              INSTALL_DESTINATION ${package_directory})
write_basic_package_version_file(ZULTavNumbersConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/ZULTavNumbersConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/ZULTavNumbersConfigVersion.cmake
        DESTINATION ${package_directory})

configure_file(cmake/zultav.pc.in zultav.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/zultav.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
