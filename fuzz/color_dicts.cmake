talmo_fuzz(color_dicts SOURCE ${CMAKE_CURRENT_SOURCE_DIR}/color_dicts.cpp LIBS talmo_ticket)
