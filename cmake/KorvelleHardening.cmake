# Release builds (the package: scripts/package) get the compiler's and the
# linker's hardening, as Debian gives its own packages: checked buffer
# functions, stack protectors, and a relocation table bound at start-up and
# then made read-only. The programs hold passwords and keys.
if(CMAKE_BUILD_TYPE STREQUAL "Release")
    add_compile_definitions(_FORTIFY_SOURCE=2)
    add_compile_options(-fstack-protector-strong -fstack-clash-protection -Wformat -Werror=format-security)
    add_link_options(LINKER:-z,relro LINKER:-z,now)
endif()
