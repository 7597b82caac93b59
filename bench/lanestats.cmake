# Lane statistics: the counter's cost per object, and an hour summarised by the inspector.
if(TARGET orvex-radar-sim-core)
    add_executable(bench_lanestats ${CMAKE_CURRENT_LIST_DIR}/bench_lanestats.cpp)
    target_link_libraries(bench_lanestats PRIVATE orvex-radar-sim-core)
    target_compile_definitions(bench_lanestats PRIVATE
        ORVEX_RADAR_INSPECT="$<TARGET_FILE:orvex-radar-inspect>")
    add_dependencies(bench_lanestats orvex-radar-inspect)
endif()
