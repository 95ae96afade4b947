# The kit for plug-in modules: find_package(QuarlModule) of an installation, or include(QuarlModule) inside this source
# tree and from any other project that has it on its CMAKE_MODULE_PATH; at file scope. Then quarl_add_module().
enable_language(ASM)
if(NOT QUARL_MODULE_INCLUDE_DIR)
  set(QUARL_MODULE_INCLUDE_DIR "${CMAKE_CURRENT_LIST_DIR}/../modules/sdk")
endif()
if(NOT TARGET quarl-rescompile)
  add_subdirectory("${CMAKE_CURRENT_LIST_DIR}/../modules/sdk" "${CMAKE_BINARY_DIR}/quarl-module-sdk")
endif()
find_program(QUARL_RSVG_CONVERT rsvg-convert)

# quarl_add_module(NAME KIND test|alert PRODUCT text VERSION n.n.n.n ICON file.png|file.svg SOURCES ...
#                  [COMPANY text] [DESCRIPTION text] [COPYRIGHT text] [OUTPUT_DIRECTORY folder])
#
# The shared object NAME.dll with its version record and its picture. PRODUCT is the name under which the console lists
# the module, COMPANY its author. An SVG becomes a picture of 48 by 48 pixels. The file goes to the plug-in folder of its
# kind in the build's installed layout, else to the current binary folder.
function(quarl_add_module name)
  set(single KIND PRODUCT COMPANY VERSION DESCRIPTION COPYRIGHT ICON OUTPUT_DIRECTORY)
  cmake_parse_arguments(PARSE_ARGV 1 module "" "${single}" "SOURCES")
  foreach(needed KIND PRODUCT VERSION ICON SOURCES)
    if(NOT module_${needed})
      message(FATAL_ERROR "quarl_add_module(${name}): ${needed} is missing")
    endif()
  endforeach()
  if(NOT module_KIND MATCHES "^(test|alert)$")
    message(FATAL_ERROR "quarl_add_module(${name}): KIND is test or alert, not ${module_KIND}")
  endif()
  if(module_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "quarl_add_module(${name}): unknown arguments ${module_UNPARSED_ARGUMENTS}")
  endif()
  if(NOT module_OUTPUT_DIRECTORY)
    if(QUARL_LAYOUT_DIR)
      set(module_OUTPUT_DIRECTORY "${QUARL_LAYOUT_DIR}/plugins/${module_KIND}s")
    else()
      set(module_OUTPUT_DIRECTORY "${CMAKE_CURRENT_BINARY_DIR}")
    endif()
  endif()

  get_filename_component(icon "${module_ICON}" ABSOLUTE)
  if(icon MATCHES "\\.svg$")
    if(NOT QUARL_RSVG_CONVERT)
      message(FATAL_ERROR "quarl_add_module(${name}): an SVG icon needs rsvg-convert (Debian: librsvg2-bin)")
    endif()
    set(png "${CMAKE_CURRENT_BINARY_DIR}/${name}-icon.png")
    add_custom_command(
      OUTPUT "${png}"
      COMMAND "${QUARL_RSVG_CONVERT}" -w 48 -h 48 -o "${png}" "${icon}"
      DEPENDS "${icon}"
      VERBATIM)
    set(icon "${png}")
  endif()

  set(resources "${CMAKE_CURRENT_BINARY_DIR}/${name}-resources.s")
  set(texts --product "${module_PRODUCT}" --version "${module_VERSION}")
  foreach(option COMPANY DESCRIPTION COPYRIGHT)
    if(module_${option})
      string(TOLOWER "${option}" flag)
      list(APPEND texts "--${flag}" "${module_${option}}")
    endif()
  endforeach()
  add_custom_command(
    OUTPUT "${resources}"
    COMMAND quarl-rescompile --output "${resources}" --icon "${icon}" --file "${name}.dll" ${texts}
    DEPENDS "${icon}" quarl-rescompile
    VERBATIM)

  add_library(${name} MODULE ${module_SOURCES} "${resources}")
  target_include_directories(${name} PRIVATE "${QUARL_MODULE_INCLUDE_DIR}")
  set_target_properties(
    ${name}
    PROPERTIES PREFIX ""
               SUFFIX ".dll"
               LIBRARY_OUTPUT_DIRECTORY "${module_OUTPUT_DIRECTORY}"
               C_VISIBILITY_PRESET hidden
               CXX_VISIBILITY_PRESET hidden
               VISIBILITY_INLINES_HIDDEN ON)
endfunction()
