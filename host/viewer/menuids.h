#pragma once

#include <vector>

/// The viewer's menus and their groups by id, as plug-ins address them.
namespace MenuIds {

constexpr const char* File = "KaltoViewer.Menu.File";
constexpr const char* Camera = "KaltoViewer.Menu.Camera";
constexpr const char* Tools = "KaltoViewer.Menu.Tools";
constexpr const char* Help = "KaltoViewer.Menu.Help";
constexpr const char* CameraContext = "KaltoViewer.CameraSelectorContextMenu";

constexpr const char* FileExit = "KaltoViewer.Group.File.Exit";
constexpr const char* CameraOpen = "KaltoViewer.Group.Camera.Open";
constexpr const char* CameraAcquisition = "KaltoViewer.Group.Camera.Acquisition";
constexpr const char* ToolsTools = "KaltoViewer.Group.Tools.Tools";
constexpr const char* HelpAbout = "KaltoViewer.Group.Help.About";
constexpr const char* ContextOpen = "KaltoViewer.Group.CameraSelectorContextMenu.Open";
constexpr const char* ContextMisc = "KaltoViewer.Group.CameraSelectorContextMenu.Misc";

constexpr const char* GlobalContext = "AppCore.Global.Context";

struct MenuLayout {
    const char* id;
    std::vector<const char*> groups;
};

inline const std::vector<MenuLayout>& layout()
{
    static const std::vector<MenuLayout> menus = {
        {File, {FileExit}},
        {Camera, {CameraOpen, CameraAcquisition}},
        {Tools, {ToolsTools}},
        {Help, {HelpAbout}},
        {CameraContext, {ContextOpen, ContextMisc}},
    };
    return menus;
}

}  // namespace MenuIds
