# kv_add_test(<name> SOURCES <files...> [LIBRARIES <targets...>] [GUI] [TIMEOUT <s>])
#
# One Qt Test executable per class or feature, registered with CTest under its
# own name. GUI tests run on the offscreen platform so that they need no display.
function(kv_add_test name)
    cmake_parse_arguments(KV "GUI" "TIMEOUT" "SOURCES;LIBRARIES" ${ARGN})
    add_executable(${name} ${KV_SOURCES})
    target_link_libraries(${name} PRIVATE Qt6::Test ${KV_LIBRARIES})
    target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR}/tests/common)
    target_compile_definitions(${name} PRIVATE
        KV_TEST_FIXTURES="${CMAKE_SOURCE_DIR}/tests/fixtures")
    add_test(NAME ${name} COMMAND ${name})
    if(NOT KV_TIMEOUT)
        set(KV_TIMEOUT 120)
    endif()
    set(env "QT_QPA_PLATFORM=offscreen;LC_ALL=C.UTF-8")
    set_tests_properties(${name} PROPERTIES TIMEOUT ${KV_TIMEOUT} ENVIRONMENT "${env}")
endfunction()
