# korven_type_library(<target>)
#
# Embeds the type library as the target's resource, made from korvenrg.h, and fails the build unless the target exports
# exactly the doors of that header.
function(korven_type_library target)
  find_program(KORVEN_WIDL x86_64-w64-mingw32-widl REQUIRED)
  find_package(Python3 REQUIRED COMPONENTS Interpreter)
  enable_language(RC)
  set(generator ${Python3_EXECUTABLE} -B ${PROJECT_SOURCE_DIR}/tools/type_library.py)
  set(folder ${PROJECT_SOURCE_DIR}/src/exports/windows)
  set(out ${PROJECT_BINARY_DIR}/type_library)
  file(MAKE_DIRECTORY ${out})

  add_custom_command(OUTPUT ${out}/korvenrg.tlb
    COMMAND ${generator} idl ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR} ${out}/korvenrg.idl
    COMMAND ${KORVEN_WIDL} -t --win64 -I${folder} -o ${out}/compiled.tlb ${out}/korvenrg.idl
    COMMAND ${generator} repair ${out}/compiled.tlb ${out}/korvenrg.tlb
    DEPENDS
      ${PROJECT_SOURCE_DIR}/src/exports/korvenrg.h
      ${PROJECT_SOURCE_DIR}/tools/type_library.py
      ${PROJECT_SOURCE_DIR}/tools/door_header.py
      ${folder}/automation_types.idl
    COMMENT "Type library of the doors"
    VERBATIM)

  configure_file(${folder}/korvenrg.rc.in ${out}/korvenrg.rc @ONLY)
  target_sources(${target} PRIVATE ${out}/korvenrg.rc ${out}/korvenrg.tlb ${folder}/module_pin.cpp)
  set_source_files_properties(${out}/korvenrg.rc PROPERTIES
    OBJECT_DEPENDS ${out}/korvenrg.tlb
    COMPILE_OPTIONS -I${out})

  add_custom_command(TARGET ${target} POST_BUILD
    COMMAND ${generator} check ${CMAKE_OBJDUMP} $<TARGET_FILE:${target}>
    VERBATIM)
endfunction()
