# Cost of one radar frame in the current objects table, repaint included.
if(TARGET orvex-tables)
    add_executable(bench_objectstable ${CMAKE_CURRENT_LIST_DIR}/bench_objectstable.cpp)
    target_link_libraries(bench_objectstable PRIVATE orvex-tables)
endif()
