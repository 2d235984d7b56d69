# SPDX-License-Identifier: GPL-3.0-or-later
# Run by cmake --install with ZETTLY_DATA (the entries' templates),
# ZETTLY_BINDIR, ZETTLY_DATADIR and ZETTLY_AUTOSTART_DIR (empty: choose)
# set. Installs the application entry and the session autostart entry, both
# naming the installed executable by its full path: TryExec then hides an entry whose program has gone, and a
# user install works whether or not its bin folder is on the PATH.
if(IS_ABSOLUTE "${ZETTLY_BINDIR}")
    set(ZETTLY_EXECUTABLE "${ZETTLY_BINDIR}/zettly")
else()
    set(ZETTLY_EXECUTABLE "${CMAKE_INSTALL_PREFIX}/${ZETTLY_BINDIR}/zettly")
endif()
# Made in a folder of their own: whoever installs may not own the build.
set(staging "$ENV{TMPDIR}")
if(NOT IS_DIRECTORY "${staging}")
    set(staging /tmp)
endif()
string(RANDOM LENGTH 12 tag)
set(ZETTLY_STAGING "${staging}/zettly-install-${tag}")
configure_file("${ZETTLY_DATA}/com.marovelin.zettly.desktop.in"
    "${ZETTLY_STAGING}/applications/com.marovelin.zettly.desktop" @ONLY)
configure_file("${ZETTLY_DATA}/com.marovelin.zettly-autostart.desktop.in"
    "${ZETTLY_STAGING}/autostart/com.marovelin.zettly.desktop" @ONLY)

file(INSTALL DESTINATION "${CMAKE_INSTALL_PREFIX}/${ZETTLY_DATADIR}/applications" TYPE FILE
    FILES "${ZETTLY_STAGING}/applications/com.marovelin.zettly.desktop")

# Desktops read autostart entries from /etc/xdg/autostart and from the
# user's own folder, never from <prefix>/etc/xdg: a prefix in the installing
# user's home (--prefix ~/.local, no root needed) means the user's folder;
# any other prefix, and a staged install (DESTDIR, the .deb), the system's.
set(autostart_dir "${ZETTLY_AUTOSTART_DIR}")
if(NOT autostart_dir)
    set(autostart_dir /etc/xdg/autostart)
    get_filename_component(home "$ENV{HOME}" REALPATH)
    get_filename_component(prefix "${CMAKE_INSTALL_PREFIX}" REALPATH)
    if("$ENV{DESTDIR}" STREQUAL "" AND NOT "$ENV{HOME}" STREQUAL "" AND NOT home STREQUAL "/"
        AND (prefix STREQUAL home OR prefix MATCHES "^${home}/"))
        if(IS_ABSOLUTE "$ENV{XDG_CONFIG_HOME}")
            set(autostart_dir "$ENV{XDG_CONFIG_HOME}/autostart")
        else()
            set(autostart_dir "${home}/.config/autostart")
        endif()
    endif()
endif()
file(INSTALL DESTINATION "${autostart_dir}" TYPE FILE FILES "${ZETTLY_STAGING}/autostart/com.marovelin.zettly.desktop")
file(REMOVE_RECURSE "${ZETTLY_STAGING}")
