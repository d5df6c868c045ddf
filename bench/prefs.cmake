add_executable(bench_prefs ${CMAKE_CURRENT_SOURCE_DIR}/prefs.cpp)
target_link_libraries(bench_prefs PRIVATE talmo_settings benchmark::benchmark_main)
