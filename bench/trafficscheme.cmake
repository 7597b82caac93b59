# Cost of one radar frame on the traffic scheme, its paint included.
if(TARGET orvex-road)
    add_executable(bench_trafficscheme ${CMAKE_CURRENT_LIST_DIR}/bench_trafficscheme.cpp)
    target_link_libraries(bench_trafficscheme PRIVATE orvex-road)
endif()
