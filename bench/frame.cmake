# One radar frame through every view that repaints per frame, as the main window shows them.
if(TARGET orvex-road AND TARGET orvex-tables AND TARGET orvex-projection)
    add_executable(bench_frame ${CMAKE_CURRENT_LIST_DIR}/bench_frame.cpp)
    target_link_libraries(bench_frame PRIVATE orvex-road orvex-tables orvex-projection)
endif()
