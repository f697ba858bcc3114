# How test programs are built, and benchmarks that share their fixtures.

# Test code runs once per compilation, so the fastest compilation wins. The libraries under test are
# compiled as for users.
add_library(test_flags INTERFACE)
target_compile_options(test_flags INTERFACE $<$<CONFIG:RelWithDebInfo>:-O0> $<$<CONFIG:RelWithDebInfo>:-g1>)

# Each kind of program shares its libraries and one set of precompiled headers.
set(core_test_libraries outpost_core)
set(sim_test_libraries kiwi_sim Qt5::WebSockets)
set(part_test_libraries outpost_station kiwi_sim)
set(window_test_libraries outpost_window kiwi_sim)
foreach(kind core sim part window)
    list(APPEND ${kind}_test_libraries Qt5::Test test_flags)
endforeach()
if(OUTPOST_PRECOMPILE)
    file(WRITE ${PROJECT_BINARY_DIR}/generated/testheaders.cpp "")
    foreach(kind core sim part window)
        add_library(${kind}_test_headers OBJECT ${PROJECT_BINARY_DIR}/generated/testheaders.cpp)
        target_link_libraries(${kind}_test_headers PRIVATE ${${kind}_test_libraries})
    endforeach()
    target_precompile_headers(core_test_headers PRIVATE <QtTest>)
    target_precompile_headers(sim_test_headers PRIVATE <QtNetwork> <QtTest> <QtWebSockets>)
    target_precompile_headers(part_test_headers PRIVATE <QtNetwork> <QtTest> <QtWebSockets>)
    target_precompile_headers(window_test_headers PRIVATE
        <QtNetwork> <QtTest> <QtWebSockets> <QtWidgets>)
endif()
function(compile_as_test kind target)
    target_link_libraries(${target} PUBLIC ${${kind}_test_libraries})
    if(OUTPOST_PRECOMPILE)
        target_precompile_headers(${target} REUSE_FROM ${kind}_test_headers)
    endif()
endfunction()

# For a target with Q_OBJECT only in <source>, which includes "<source's name>.moc". Much faster
# than AUTOMOC, which adds two targets and a compilation unit.
add_custom_target(test_mocs COMMENT "Making what the tests include")
function(make_moc target source)
    get_filename_component(name ${source} NAME_WE)
    set(folder ${CMAKE_CURRENT_BINARY_DIR}/${target}_moc)
    qt5_generate_moc(${source} ${folder}/${name}.moc TARGET ${target})
    target_sources(${target} PRIVATE ${folder}/${name}.moc)
    target_include_directories(${target} PRIVATE ${folder})
    add_custom_target(${target}_moc DEPENDS ${folder}/${name}.moc)
    add_dependencies(test_mocs ${target}_moc)
endfunction()

add_custom_target(core_tests COMMENT "Building the core tests")
function(add_test_program kind target source)
    add_executable(${target} ${source})
    compile_as_test(${kind} ${target})
    make_moc(${target} ${source})
    set_target_properties(${target} PROPERTIES
        RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/tests)
    if(NOT kind STREQUAL "window")
        add_dependencies(core_tests ${target})
    endif()
endfunction()
