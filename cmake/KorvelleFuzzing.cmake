# Fuzzing with libFuzzer: configure a build of its own with clang and
# -DKORVELLE_FUZZ=ON (scripts/build-sanitized does this). Everything in that
# build is instrumented for coverage and checked by AddressSanitizer (leaks
# included) and UndefinedBehaviorSanitizer, so that the same build runs the
# tests under the sanitizers and the fuzz targets, which also get libFuzzer's
# main. Any finding ends the test or the fuzz run that made it.
#
# KORVELLE_CORE_ONLY leaves out the widgets and everything that runs the Linux
# programs on real images as root: what stays is the core library, the Linux
# programs' libraries, their tests and the fuzz targets with their corpus
# replays, the parts that read what comes from outside, built and run in a
# fraction of the time of the whole.
#
# kv_add_fuzzer(<name> SOURCES <files...> [LIBRARIES <targets...>] CORPUS <dir>)
#
# The target goes to <build>/fuzz/<name>, and <build>/fuzz/<name>.corpus names
# its seed corpus, so that scripts/fuzz can run every target on its seeds.
# Ordinary builds do not define the function: the corpus replay tests that sit
# beside each target check `if(COMMAND kv_add_fuzzer)`.
option(KORVELLE_FUZZ "Build the libFuzzer targets (clang only), with ASan and UBSan" OFF)
option(KORVELLE_CORE_ONLY "Build only the libraries, the tests that need no root or widgets, and the fuzz targets" OFF)

if(KORVELLE_FUZZ)
    if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
        message(FATAL_ERROR "KORVELLE_FUZZ needs clang: "
            "configure with -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++")
    endif()
    add_compile_options(-fsanitize=fuzzer-no-link,address,undefined
                        -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
    add_link_options(-fsanitize=address,undefined)
    set(KORVELLE_FUZZ_DIR ${CMAKE_BINARY_DIR}/fuzz)

    function(kv_add_fuzzer name)
        cmake_parse_arguments(KV "" "CORPUS" "SOURCES;LIBRARIES" ${ARGN})
        if(NOT KV_CORPUS)
            message(FATAL_ERROR "kv_add_fuzzer(${name}): CORPUS is required")
        endif()
        add_executable(${name} ${KV_SOURCES})
        target_link_libraries(${name} PRIVATE ${KV_LIBRARIES})
        target_link_options(${name} PRIVATE -fsanitize=fuzzer)
        set_target_properties(${name} PROPERTIES
            AUTOMOC OFF AUTOUIC OFF AUTORCC OFF
            RUNTIME_OUTPUT_DIRECTORY ${KORVELLE_FUZZ_DIR})
        file(WRITE ${KORVELLE_FUZZ_DIR}/${name}.corpus "${KV_CORPUS}\n")
        if(NOT TARGET fuzzers)
            add_custom_target(fuzzers)
        endif()
        add_dependencies(fuzzers ${name})
    endfunction()
endif()
