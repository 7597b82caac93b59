# Cost of one radar frame in a full objects history, and of saving it.
if(TARGET orvex-tables)
    add_executable(bench_history ${CMAKE_CURRENT_LIST_DIR}/bench_history.cpp)
    target_link_libraries(bench_history PRIVATE orvex-tables)
endif()
