add_executable(bench_tpif_writer ${CMAKE_CURRENT_SOURCE_DIR}/tpif_writer.cpp)
target_link_libraries(bench_tpif_writer PRIVATE talmo_tpif benchmark::benchmark_main)
