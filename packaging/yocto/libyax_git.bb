SUMMARY = "A registry of keys and typed values and a component framework"
DESCRIPTION = "Keeps a persistent hierarchy of keys with typed values in one small file, and finds \
components by identifier."
SECTION = "libs"
# No licence is chosen yet, see debian/copyright.
LICENSE = "CLOSED"

# Where your sources are.
SRC_URI = "git:///path/to/libyax;protocol=file;branch=main"
SRCREV = "${AUTOREV}"
PV = "0.1.0+git"
S = "${WORKDIR}/git"

inherit cmake pkgconfig

EXTRA_OECMAKE = "-DYAX_BUILD_TESTS=OFF -DYAX_BUILD_BENCH=OFF -DYAX_BUILD_EXAMPLES=OFF"

PACKAGECONFIG ??= "tool lines"
PACKAGECONFIG[tool] = "-DYAX_BUILD_TOOLS=ON,-DYAX_BUILD_TOOLS=OFF,cli11 nlohmann-json"
# History and completion in yaxreg shell.
PACKAGECONFIG[lines] = "-DYAX_LINE_EDITING=ON,-DYAX_LINE_EDITING=OFF,libedit"

PACKAGES =+ "yaxreg"
FILES:yaxreg = "${bindir}/yaxreg ${datadir}/bash-completion ${datadir}/fish ${datadir}/yaxreg ${datadir}/zsh"
