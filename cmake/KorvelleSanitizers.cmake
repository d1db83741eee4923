# A build checked by AddressSanitizer (leaks included) and
# UndefinedBehaviorSanitizer: configure a build of its own with
# -DKORVELLE_SANITIZE=ON (scripts/sanitize does this, with KORVELLE_CORE_ONLY).
# Any finding ends the test that made it, with the sanitizer's report.
#
# KORVELLE_CORE_ONLY leaves out everything but the core library, its tests and
# the fuzz targets' corpus replays: the parts that read what comes from outside,
# built and run in a fraction of the time of the whole.
option(KORVELLE_SANITIZE "Build with AddressSanitizer and UndefinedBehaviorSanitizer" OFF)
option(KORVELLE_CORE_ONLY "Build only the core library, its tests and the corpus replays" OFF)

if(KORVELLE_SANITIZE)
    set(KORVELLE_SANITIZER_FLAGS -fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
    add_compile_options(${KORVELLE_SANITIZER_FLAGS})
    add_link_options(${KORVELLE_SANITIZER_FLAGS})
endif()
