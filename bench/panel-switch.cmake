# A panel switch inside the loaded bundle: selectPanel and the repaint of the pane.
if(TARGET TalmoFeatures)
  add_executable(bench_panel_switch ${CMAKE_CURRENT_SOURCE_DIR}/panel-switch.cpp)
  target_link_libraries(bench_panel_switch PRIVATE talmo_platform talmo_settings Qt6::Widgets benchmark::benchmark ${CMAKE_DL_LIBS})
  target_compile_definitions(bench_panel_switch PRIVATE TALMO_BUNDLE_LIBRARY="$<TARGET_FILE:TalmoFeatures>")
  # The bundle registers its instances in the program's registry, as in a print dialog.
  set_target_properties(bench_panel_switch PROPERTIES ENABLE_EXPORTS ON)
  add_dependencies(bench_panel_switch TalmoFeaturesBundle)
endif()
