################################################################################
#
# libyax
#
################################################################################

LIBYAX_VERSION = 0.1.0
# Where your sources are.
LIBYAX_SITE = /path/to/libyax
LIBYAX_SITE_METHOD = local
LIBYAX_INSTALL_STAGING = YES
# No licence is chosen yet, see debian/copyright.
LIBYAX_LICENSE = unknown
LIBYAX_CONF_OPTS = \
	-DYAX_BUILD_TESTS=OFF \
	-DYAX_BUILD_BENCH=OFF \
	-DYAX_BUILD_EXAMPLES=OFF

ifeq ($(BR2_PACKAGE_LIBYAX_TOOL),y)
LIBYAX_CONF_OPTS += -DYAX_BUILD_TOOLS=ON
LIBYAX_DEPENDENCIES += cli11 json-for-modern-cpp
ifeq ($(BR2_PACKAGE_LIBEDIT),y)
LIBYAX_DEPENDENCIES += libedit
LIBYAX_CONF_OPTS += -DYAX_LINE_EDITING=ON
else
LIBYAX_CONF_OPTS += -DYAX_LINE_EDITING=OFF
endif
else
LIBYAX_CONF_OPTS += -DYAX_BUILD_TOOLS=OFF
endif

$(eval $(cmake-package))
