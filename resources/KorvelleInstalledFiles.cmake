# Runs at install time, when the real prefix is known (cmake --install
# --prefix, or /usr under CPack's staging folder): writes the files that name
# where the programs are installed, the polkit policy and the manual pages.
# Set by the caller: KV_RESOURCES, KV_LIBEXECDIR, KV_DATADIR, KV_MANDIR,
# KORVELLE_VERSION.
set(KORVELLE_LIBEXEC "${CMAKE_INSTALL_PREFIX}/${KV_LIBEXECDIR}/korvelle")
set(KORVELLE_INSTALLED_DISKUTIL "${KORVELLE_LIBEXEC}/diskutil")
set(stage "$ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}")

# pkexec matches the program's installed path, so the policy names it.
set(policy "${stage}/${KV_DATADIR}/polkit-1/actions/org.korvelle.Korvelle.policy")
message(STATUS "Installing: ${policy}")
configure_file("${KV_RESOURCES}/org.korvelle.Korvelle.policy.in" "${policy}" @ONLY)

# Manual pages, compressed as Debian wants them (man reads them either way).
foreach(page korvelle.1 korvelle-hdiutil.1 korvelle-diskutil.8)
    string(REGEX REPLACE ".*\\.([0-9])$" "\\1" section "${page}")
    set(target "${stage}/${KV_MANDIR}/man${section}/${page}")
    message(STATUS "Installing: ${target}.gz")
    configure_file("${KV_RESOURCES}/man/${page}" "${target}" @ONLY)
    execute_process(COMMAND gzip -9nf "${target}" RESULT_VARIABLE status)
    if(NOT status EQUAL 0)
        message(FATAL_ERROR "gzip could not compress ${target}")
    endif()
endforeach()
