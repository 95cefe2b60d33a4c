# korven_room(<name> FOLDER <folder below src> SOURCES <files> [LINKS <rooms>])
#
# A room is a folder of src/ and a static library of its own, korven_<name>. What it may include and call is
# what it LINKS, directly or through its rooms, and nothing else:
#   - its include path holds one link per permitted folder, so a header of any other folder is not found;
#   - a check module links the room against its permitted rooms alone, so a call outside them does not link.
function(korven_room name)
  cmake_parse_arguments(ROOM "" "FOLDER" "SOURCES;LINKS" ${ARGN})
  set(target korven_${name})
  set(include_root ${PROJECT_BINARY_DIR}/rooms/${name})
  cmake_path(GET ROOM_FOLDER PARENT_PATH parent)
  file(MAKE_DIRECTORY ${include_root}/${parent})
  file(CREATE_LINK ${PROJECT_SOURCE_DIR}/src/${ROOM_FOLDER} ${include_root}/${ROOM_FOLDER} SYMBOLIC)

  add_library(${target} STATIC ${ROOM_SOURCES})
  target_include_directories(${target} PUBLIC ${include_root})
  list(TRANSFORM ROOM_LINKS PREPEND korven_)
  target_link_libraries(${target} PUBLIC ${ROOM_LINKS} PRIVATE korven_compiler)
  target_compile_definitions(${target} PRIVATE KORVENRG_BUILDING)
  set_property(GLOBAL APPEND PROPERTY KORVEN_ROOMS ${target})

  if(KORVENRG_TESTS AND NOT WIN32 AND NOT KORVENRG_SANITIZER)
    file(GENERATE OUTPUT ${PROJECT_BINARY_DIR}/rooms/${name}_links.cpp CONTENT "")
    add_library(${target}_links MODULE ${PROJECT_BINARY_DIR}/rooms/${name}_links.cpp)
    target_link_libraries(${target}_links PRIVATE $<LINK_LIBRARY:WHOLE_ARCHIVE,${target}>)
    target_link_options(${target}_links PRIVATE -Wl,--no-undefined)
    set_target_properties(${target}_links PROPERTIES
      LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/rooms)
  endif()
endfunction()
