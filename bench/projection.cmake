# The projection's two hot paths: the parameter pick-up search and one overlay frame.
if(TARGET orvex-projection)
    add_executable(bench_projection ${CMAKE_CURRENT_LIST_DIR}/bench_projection.cpp)
    target_link_libraries(bench_projection PRIVATE orvex-projection)
endif()
