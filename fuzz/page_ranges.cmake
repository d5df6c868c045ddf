talmo_fuzz(page_ranges SOURCE ${CMAKE_CURRENT_SOURCE_DIR}/page_ranges.cpp LIBS talmo_ticket)
