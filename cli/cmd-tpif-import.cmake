list(APPEND TALMO_CLI_LIBS talmo_tpif)
# Last place the commands look for the device profile: the source tree's resources.
set_source_files_properties(${CMAKE_CURRENT_LIST_DIR}/cmd-tpif-import.cpp PROPERTIES
  COMPILE_DEFINITIONS "TALMO_SOURCE_RESOURCES=\"${PROJECT_SOURCE_DIR}/resources\"")
