#pragma once

/// Registers the wizard's QML resources (colcal_ui); safe to call any number of times. A static
/// library's resources are not registered until someone asks, and the wizard's objects can be made
/// without the plug-in (tests, the minimal view).
void initUiResources();
