# mplsfwd_add_library(<name> [DEPS <targets>...] [PRIVATE_DEPS <targets>...])
#
# Builds the folder that calls it into the target mplsfwd_<name> (alias mplsfwd::<name>).
# Its headers are reachable as <mplsfwd/<name>/X.h> through a per-target include root that holds
# only a link to this folder, so a target sees the headers of exactly itself and its DEPS.
set(MPLSFWD_LIBRARY_TARGETS "" CACHE INTERNAL "")
set(MPLSFWD_LIBRARY_DIRS "" CACHE INTERNAL "")

function(mplsfwd_add_library name)
  cmake_parse_arguments(A "" "" "DEPS;PRIVATE_DEPS" ${ARGN})
  set(target mplsfwd_${name})
  set(incroot ${CMAKE_BINARY_DIR}/include-roots/${name})
  file(MAKE_DIRECTORY ${incroot}/mplsfwd)
  if(NOT EXISTS ${incroot}/mplsfwd/${name})
    file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR} ${incroot}/mplsfwd/${name} SYMBOLIC)
  endif()
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
  if(sources)
    add_library(${target} STATIC ${sources})
    set(scope PUBLIC)
  else()
    add_library(${target} INTERFACE)
    set(scope INTERFACE)
  endif()
  add_library(mplsfwd::${name} ALIAS ${target})
  set_target_properties(${target} PROPERTIES EXPORT_NAME ${name} POSITION_INDEPENDENT_CODE ON)
  target_include_directories(${target} ${scope}
    $<BUILD_INTERFACE:${incroot}> $<INSTALL_INTERFACE:include>)
  target_compile_features(${target} ${scope} cxx_std_20)
  target_link_libraries(${target} ${scope} ${A_DEPS})
  if(A_PRIVATE_DEPS)
    target_link_libraries(${target} PRIVATE ${A_PRIVATE_DEPS})
  endif()
  set(MPLSFWD_LIBRARY_TARGETS ${MPLSFWD_LIBRARY_TARGETS} ${target} CACHE INTERNAL "")
  set(MPLSFWD_LIBRARY_DIRS ${MPLSFWD_LIBRARY_DIRS} "${name}=${CMAKE_CURRENT_SOURCE_DIR}" CACHE INTERNAL "")
endfunction()

# mplsfwd_add_test(<name> [DEPS <targets>...]): one GoogleTest executable from the *.cpp of the
# calling folder, registered with ctest.
function(mplsfwd_add_test name)
  cmake_parse_arguments(A "" "" "DEPS" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
  if(NOT sources)
    return()
  endif()
  add_executable(${name} ${sources})
  target_link_libraries(${name} PRIVATE ${A_DEPS} mplsfwd_test_base GTest::gtest_main)
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 300)
endfunction()

# Headers that stay in the source tree: the trace and assertion macros with their short names and
# the helpers of the libraries' own sources. The machines' classes are installed, since an agent may
# construct them itself (their factories and constructors are entry points beside the assemblies),
# and with them the internals their members need. No installed header includes a private one; the
# install test checks that, and that no installed header defines a macro without the MPLSFWD_
# prefix.
set(MPLSFWD_PRIVATE_HEADERS log/Assert.h log/FastLog.h log/Trace.h log/RateLimiter.h
    Fal/RequireTable.h
    transit/MplsSmTrace.h
    decap/MplsDecapSmTrace.h decap/DecapKinds.h
    pseudowire/LFibSmTrace.h)

function(mplsfwd_install_package)
  include(GNUInstallDirs)
  include(CMakePackageConfigHelpers)
  foreach(entry ${MPLSFWD_LIBRARY_DIRS})
    string(REPLACE "=" ";" parts ${entry})
    list(GET parts 0 name)
    list(GET parts 1 dir)
    set(excludes "")
    foreach(private ${MPLSFWD_PRIVATE_HEADERS})
      if(private MATCHES "^${name}/(.*)$")
        list(APPEND excludes PATTERN ${CMAKE_MATCH_1} EXCLUDE)
      endif()
    endforeach()
    install(DIRECTORY ${dir}/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/mplsfwd/${name}
      FILES_MATCHING PATTERN "*.h" ${excludes})
  endforeach()
  file(GLOB umbrellas ${PROJECT_SOURCE_DIR}/src/umbrella/*.h)
  install(FILES ${umbrellas} ${MPLSFWD_VERSION_HEADER} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/mplsfwd)
  install(TARGETS ${MPLSFWD_LIBRARY_TARGETS} mplsfwd_all mplsfwd_runtime EXPORT mplsfwdTargets
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
  install(EXPORT mplsfwdTargets NAMESPACE mplsfwd:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/mplsfwd)
  configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/mplsfwdConfig.cmake.in
    ${CMAKE_BINARY_DIR}/mplsfwdConfig.cmake INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/mplsfwd)
  write_basic_package_version_file(${CMAKE_BINARY_DIR}/mplsfwdConfigVersion.cmake
    COMPATIBILITY SameMinorVersion)
  install(FILES ${CMAKE_BINARY_DIR}/mplsfwdConfig.cmake ${CMAKE_BINARY_DIR}/mplsfwdConfigVersion.cmake
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/mplsfwd)

  # pkg-config: every static archive, the highest layer first so that one pass links.
  set(libs "")
  foreach(target ${MPLSFWD_LIBRARY_TARGETS})
    get_target_property(type ${target} TYPE)
    if(type STREQUAL "STATIC_LIBRARY")
      list(PREPEND libs "-l${target}")
    endif()
  endforeach()
  list(JOIN libs " " MPLSFWD_PC_LIBS)
  file(RELATIVE_PATH MPLSFWD_PC_UP /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/mplsfwd.pc.in ${CMAKE_BINARY_DIR}/mplsfwd.pc @ONLY)
  install(FILES ${CMAKE_BINARY_DIR}/mplsfwd.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

  install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR})
  install(FILES ${PROJECT_SOURCE_DIR}/README.md ${PROJECT_SOURCE_DIR}/LICENSE
    DESTINATION ${CMAKE_INSTALL_DOCDIR})
endfunction()
