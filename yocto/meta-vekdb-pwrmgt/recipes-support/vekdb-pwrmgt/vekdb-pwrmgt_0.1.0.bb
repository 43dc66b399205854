# SPDX-License-Identifier: Apache-2.0
SUMMARY = "Power and thermal data layer of a server's management controller"
DESCRIPTION = "Keeps power, supply, performance, processor and temperature histories of 24 hours in database tables and \
folds them into averages, maxima and minima; keeps power policy, capping and supply redundancy."
SECTION = "libs"
LICENSE = "Apache-2.0"
LIC_FILES_CHKSUM = "file://LICENSE;md5=3b83ef96387f14655fc854ddc3c6bd57"

# The source archive of the release, in DL_DIR or on a mirror of the distribution's.
SRC_URI = "file://vekdb-pwrmgt-${PV}.tar.xz \
           file://run-ptest"

inherit cmake pkgconfig ptest
inherit ${@bb.utils.contains('PACKAGECONFIG', 'host', 'systemd useradd', '', d)}

# Without the host platform the controller's own libraries are used: PWRMGT_PLATFORM_DIR may name a prefix that has them.
PACKAGECONFIG ??= "host"
PACKAGECONFIG[host] = "-DPWRMGT_HOST_PLATFORM=ON -DPWRMGT_TOOLS=ON,-DPWRMGT_HOST_PLATFORM=OFF -DPWRMGT_TOOLS=OFF,sqlite3 cli11 nlohmann-json"
PACKAGECONFIG[ipmi] = "-DPWRMGT_IPMI=ON,-DPWRMGT_IPMI=OFF,openipmi"
PACKAGECONFIG[mariadb] = "-DPWRMGT_MARIADB=ON,-DPWRMGT_MARIADB=OFF,mariadb"

EXTRA_OECMAKE = "-DCMAKE_SKIP_INSTALL_RPATH=ON -DPWRMGT_UNIT_DIR=${systemd_system_unitdir} -DPWRMGT_SMALL=ON \
                 ${@bb.utils.contains('PTEST_ENABLED', '1', '-DPWRMGT_TESTS=ON', '-DPWRMGT_TESTS=OFF', d)}"
DEPENDS += "${@bb.utils.contains('PTEST_ENABLED', '1', 'googletest', '', d)}"

SYSTEMD_SERVICE:${PN}-tools = "pwrmgtd.service"
SYSTEMD_PACKAGES = "${@bb.utils.contains('PACKAGECONFIG', 'host', '${PN}-tools', '', d)}"
USERADD_PACKAGES = "${SYSTEMD_PACKAGES}"
GROUPADD_PARAM:${PN}-tools = "--system vekdb"
USERADD_PARAM:${PN}-tools = "--system --gid vekdb --home-dir /var/lib/vekdb --no-create-home --shell /sbin/nologin vekdb"

# The unit tests run against a recorder in the test programs: they need no database and no firmware.
do_install_ptest() {
    install -d ${D}${PTEST_PATH}/tests
    for program in $(find ${B}/tests -name '*_test' -type f -perm -u+x ! -path '*/host/*' ! -path '*/tools/*' ! -path '*/way/*'); do
        install -m 0755 $program ${D}${PTEST_PATH}/tests
        chrpath --delete ${D}${PTEST_PATH}/tests/$(basename $program)
    done
}

PACKAGES =+ "${PN}-host ${PN}-ipmi ${PN}-mariadb ${PN}-tools"
FILES:${PN} = "${libdir}/libvekdb_pwrmgt.so.*"
FILES:${PN}-host = "${libdir}/libipmiraw.so.* ${libdir}/libvekdb_client.so.* ${libdir}/libvekdb_platform.so.* ${libdir}/libvekdb_prop.so.*"
FILES:${PN}-ipmi = "${libdir}/libipmiraw_openipmi.so"
FILES:${PN}-mariadb = "${libdir}/libvekdb_mariadb.so"
FILES:${PN}-tools = "${bindir} ${datadir}/bash-completion ${datadir}/pwrmgtctl ${sysconfdir} ${systemd_system_unitdir} ${nonarch_libdir}/sysusers.d ${nonarch_libdir}/tmpfiles.d"
FILES:${PN}-dev += "${libdir}/cmake"
RDEPENDS:${PN}-ptest += "${PN}"
# Modules, loaded by their names: they have no version.
INSANE_SKIP:${PN}-ipmi = "dev-so"
INSANE_SKIP:${PN}-mariadb = "dev-so"
