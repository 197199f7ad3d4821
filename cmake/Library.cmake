# KorUtil itself: libKorUtil.so natively, KorUtil.dll on Windows.
target_include_directories(KorUtil
  PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>
  PRIVATE ${PROJECT_SOURCE_DIR})
target_compile_definitions(KorUtil PRIVATE KORUTIL_BUILD)
target_compile_features(KorUtil PUBLIC cxx_std_20)
set_target_properties(KorUtil PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})

# For programs with a guard and the code that may fault in one source file; see korutil/fault_guard.h.
add_library(KorFaultTranslation INTERFACE)
add_library(KorUtil::FaultTranslation ALIAS KorFaultTranslation)
set_target_properties(KorFaultTranslation PROPERTIES EXPORT_NAME FaultTranslation)
target_compile_options(KorFaultTranslation INTERFACE
  $<$<OR:$<COMPILE_LANG_AND_ID:CXX,GNU>,$<COMPILE_LANG_AND_ID:C,GNU>>:-fnon-call-exceptions;-fasynchronous-unwind-tables>)

function(korutil_finish_library)
  if(NOT WIN32)
    target_link_libraries(KorUtil PUBLIC KorPlatform)
    foreach(library KorUtil KorPlatform)
      target_link_options(${library} PRIVATE -Wl,--no-undefined -Wl,--version-script=${PROJECT_SOURCE_DIR}/cmake/hide-runtime.map)
      set_property(TARGET ${library} APPEND PROPERTY LINK_DEPENDS ${PROJECT_SOURCE_DIR}/cmake/hide-runtime.map)
    endforeach()
    return()
  endif()
  target_link_libraries(KorUtil PUBLIC KorPlatform)
  set_target_properties(KorUtil PROPERTIES PREFIX "")
  # --kill-at exports armAlloc, not armAlloc@16; the import library must still answer for __imp__armAlloc@16,
  # so it is made anew from the decorated names in the objects.
  target_link_options(KorUtil PRIVATE -Wl,--kill-at)
  set(definitions ${CMAKE_BINARY_DIR}/lib/KorUtil.def)
  find_program(DLLTOOL i686-w64-mingw32-dlltool REQUIRED)
  add_custom_command(TARGET KorUtil POST_BUILD COMMAND_EXPAND_LISTS VERBATIM
    COMMAND ${DLLTOOL} -z ${definitions} "$<FILTER:$<TARGET_OBJECTS:KorUtil>,EXCLUDE,(\\.rc\\.|\\.res\\.)>"
    COMMAND ${DLLTOOL} -k -d ${definitions} -D KorUtil.dll -l $<TARGET_LINKER_FILE:KorUtil>)
  # An exception leaves the DLL only with the shared runtime, which therefore lies beside it.
  foreach(runtime libgcc_s_dw2-1.dll libstdc++-6.dll libwinpthread-1.dll)
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${runtime}
                    OUTPUT_VARIABLE path OUTPUT_STRIP_TRAILING_WHITESPACE)
    if(NOT IS_ABSOLUTE "${path}")
      message(FATAL_ERROR "The compiler's runtime library ${runtime} was not found")
    endif()
    configure_file(${path} ${CMAKE_BINARY_DIR}/bin/${runtime} COPYONLY)
    install(FILES ${path} DESTINATION ${CMAKE_INSTALL_BINDIR})
  endforeach()
endfunction()
