add_executable(bench_tpif_import ${CMAKE_CURRENT_SOURCE_DIR}/tpif-import.cpp)
target_link_libraries(bench_tpif_import PRIVATE talmo_tpif benchmark::benchmark_main)
target_compile_definitions(bench_tpif_import PRIVATE TALMO_SOURCE_DIR="${PROJECT_SOURCE_DIR}")
