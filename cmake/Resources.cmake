# Resources: text files in, what each target links in and resource-only libraries out.
add_subdirectory(tools/korrc)

# korutil_run_korrc(OUTPUT form NAME name TEXTS file... [PIECES file] [DEPENDS file...] [VERSION a.b.c])
# makes OUTPUT in the form `res`, `table` or `library`.
function(korutil_run_korrc output form)
  cmake_parse_arguments(arg "" "NAME;PIECES;VERSION" "TEXTS;DEPENDS" ${ARGN})
  if(NOT arg_VERSION)
    set(arg_VERSION ${PROJECT_VERSION})
  endif()
  set(command ${KORRC} --name ${arg_NAME} --version ${arg_VERSION})
  foreach(texts IN LISTS arg_TEXTS)
    list(APPEND command --texts ${texts})
  endforeach()
  if(arg_PIECES)
    list(APPEND command --pieces ${arg_PIECES})
  endif()
  get_filename_component(folder ${output} DIRECTORY)
  file(MAKE_DIRECTORY ${folder})
  add_custom_command(OUTPUT ${output} VERBATIM COMMAND ${command} --${form} ${output}
    DEPENDS ${KORRC_DEPENDS} ${arg_TEXTS} ${arg_PIECES} ${arg_DEPENDS} COMMENT "Compiling resources: ${output}")
endfunction()

# korutil_link_resources(target NAME name TEXTS file... [PIECES file] [DEPENDS file...]): the module's own resources.
function(korutil_link_resources target)
  set(stem ${CMAKE_CURRENT_BINARY_DIR}/${target}_resources)
  if(WIN32)
    korutil_run_korrc(${stem}.res res ${ARGN})
    # The import library is made anew from the objects whose names have no ".res." in them.
    add_custom_command(OUTPUT ${stem}.res.obj VERBATIM DEPENDS ${stem}.res
      COMMAND ${CMAKE_RC_COMPILER} -J res -O coff -i ${stem}.res -o ${stem}.res.obj)
    set(made ${stem}.res.obj)
    set_source_files_properties(${made} TARGET_DIRECTORY ${target} PROPERTIES EXTERNAL_OBJECT ON GENERATED ON)
  else()
    set(made ${stem}.cpp)
    korutil_run_korrc(${made} table ${ARGN})
    target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR}/include)
  endif()
  target_sources(${target} PRIVATE ${made})
  # The target may belong to another folder, whose build does not know the rule that makes its source.
  add_custom_target(${target}_resources DEPENDS ${made})
  add_dependencies(${target} ${target}_resources)
endfunction()

# korutil_resource_library(target folder NAME name TEXTS file... [PIECES file] [DEPENDS file...] [VERSION a.b.c]):
# a resource-only library NAME.dll in a folder, the same file on every target.
function(korutil_resource_library target folder)
  cmake_parse_arguments(arg "" "NAME" "" ${ARGN})
  korutil_run_korrc(${folder}/${arg_NAME}.dll library ${ARGN})
  add_custom_target(${target} ALL DEPENDS ${folder}/${arg_NAME}.dll)
endfunction()
