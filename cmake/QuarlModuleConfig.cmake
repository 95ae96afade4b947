# What find_package(QuarlModule) of another project reads: quarl_add_module(), the module header, the resource writer.
# Stands in <prefix>/<lib>/cmake/QuarlModule, beside QuarlModule.cmake and QuarlModulePlaces.cmake.
include("${CMAKE_CURRENT_LIST_DIR}/QuarlModulePlaces.cmake")
if(NOT TARGET quarl-rescompile)
  add_executable(quarl-rescompile IMPORTED)
  set_target_properties(quarl-rescompile PROPERTIES IMPORTED_LOCATION "${QUARL_MODULE_RESCOMPILE}")
endif()
include("${CMAKE_CURRENT_LIST_DIR}/QuarlModule.cmake")
