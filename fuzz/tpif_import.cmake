talmo_fuzz(tpif_import SOURCE ${CMAKE_CURRENT_SOURCE_DIR}/tpif_import.cpp LIBS talmo_tpif)
target_compile_definitions(fuzz_tpif_import PRIVATE TALMO_SOURCE_DIR="${PROJECT_SOURCE_DIR}")
