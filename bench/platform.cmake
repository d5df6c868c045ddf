add_executable(bench_platform ${CMAKE_CURRENT_SOURCE_DIR}/platform.cpp)
target_link_libraries(bench_platform PRIVATE talmo_platform benchmark::benchmark_main)
