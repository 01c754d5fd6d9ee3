# `cpack -G DEB` in a build tree: one package with colcal, kaltoviewer, the SDK
# library and the calibrator plug-in. The installed programs find the library
# and the plug-in relative to themselves, so the tree works from any prefix.
set(COLCAL_PACKAGE_MAINTAINER "colcal maintainers <colcal@ostrel.invalid>" CACHE STRING
    "Maintainer field of the Debian package")

set(CPACK_PACKAGE_NAME colcal)
set(CPACK_PACKAGE_VENDOR "Ostrel AG")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "${COLCAL_PACKAGE_MAINTAINER}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Colour calibration for colour cameras")
set(CPACK_PACKAGE_DESCRIPTION
    "colcal calibrates a colour camera against a 24-patch chart: it finds the chart, neutralises the camera, \
balances white, sets the brightness, fits gains, a colour matrix and a hue/saturation adjustment, and writes \
the camera's settings and an HTML report. The package also holds kaltoviewer, a camera viewer, with the \
calibrator as its plug-in, and emulated colour cameras to try it on.")
set(CPACK_STRIP_FILES ON)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# What is loaded at run time rather than linked, so dpkg-shlibdeps cannot see
# it: the wizard's QML modules and the TIFF reader of colcal's image commands.
set(CPACK_DEBIAN_PACKAGE_DEPENDS
    "qml-module-qtquick2, qml-module-qtquick-controls2, qml-module-qtquick-layouts, \
qml-module-qtquick-window2, qml-module-qt-labs-settings, qml-module-qtmultimedia, qt5-image-formats-plugins")
# The Japanese, Korean and Chinese translations need a font that has their characters.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "fonts-noto-cjk")

include(CPack)
