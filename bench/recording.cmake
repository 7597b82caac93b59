# Recording, replay at speed 100 and inspection of a busy radar, through the programs.
if(TARGET orvex-radar-sim-core)
    add_executable(bench_recording ${CMAKE_CURRENT_LIST_DIR}/bench_recording.cpp)
    target_link_libraries(bench_recording PRIVATE orvex-radar-sim-core)
    target_compile_definitions(bench_recording PRIVATE
        ORVEX_RADAR_SIM="$<TARGET_FILE:orvex-radar-sim>"
        ORVEX_RADAR_INSPECT="$<TARGET_FILE:orvex-radar-inspect>")
    add_dependencies(bench_recording orvex-radar-sim orvex-radar-inspect)
endif()
