#pragma once

/// The interface id every plug-in of the host declares in Q_PLUGIN_METADATA.
#define CORE_PLUGIN_IPLUGIN_IID "com.ostrel.KaltoViewer.Core.Plugin.IPlugin/1.0"
