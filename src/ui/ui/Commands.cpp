#include "ui/Commands.h"

#include <array>

namespace tessary {
namespace {

constexpr std::array kCommands{
    CommandInfo{Command::Help, "Help Item Identifier", "Help", "Help",
                "How to measure with microscope...", "&Help", "Help"},
    CommandInfo{Command::Options, "Options Item Identifier", "Options", "Options", "Preferences...",
                "&Options...", "Cog"},
    CommandInfo{Command::Microscope, "Microscope Item Identifier", "Microscope", "Microscope",
                "Open microscope, change resolution", "&Microscope...", "Microscope"},
    CommandInfo{Command::Folder, "Folder Item Identifier", "Folder", "Folder",
                "Open folder of saved image and video files", "&Folder", "Folder"},
    CommandInfo{Command::Calibration, "Calibration Item Identifier", "Calibration", "Calibration",
                "Manage calibration data", "&Calibration...", "Calibration"},
    CommandInfo{Command::Crosshair, "Crosshair Item Identifier", "Crosshair", "Crosshair",
                "Show/hide crosshair", "Cross&hair", "Crosshair"},
    CommandInfo{Command::Grid, "Grid Item Identifier", "Grid", "Grid", "Show/hide grid", "&Grid",
                "Grid"},
    CommandInfo{Command::Concentric, "Concentric Item Identifier", "Concentric", "Concentric",
                "Show/hide concentric", "C&oncentric", "Concentric"},
    CommandInfo{Command::Shutter, "Shutter Item Identifier", "Shutter", "Shutter", "Snap image",
                "&Shutter", "Shutter"},
    CommandInfo{Command::Record, "Record Item Identifier", "Record", "Record", "Record video",
                "&Record...", "Record"},
    CommandInfo{Command::Line, "Line Item Identifier", "Line", "Line", "Measure a line", "&Line",
                "Line"},
    CommandInfo{Command::Line2, "Line2 Item Identifier", "Line2", "Line2", "Measure parallel lines",
                "&Parallel Lines", "Line2"},
    CommandInfo{Command::Rectangle, "Rectangle Item Identifier", "Rectangle", "Rectangle",
                "Measure a rectangle", "&Rectangle", "Rectangle"},
    CommandInfo{Command::Circle, "Circle Item Identifier", "Circle", "Circle", "Measure a circle",
                "C&ircle", "Circle"},
    CommandInfo{Command::Angle, "Angle Item Identifier", "Angle", "Angle", "Measure an angle",
                "&Angle", "Angle"},
    CommandInfo{Command::Pencil, "Pencil Item Identifier", "Pencil", "Pencil", "Draw with a pencil",
                "Pe&ncil", "Pencil"},
    // Its label, palette label and image differ from its name in code; all three are meant so.
    CommandInfo{Command::Drag, "Drag Item Identifier", "Stop measure", "None", "Stop measure",
                "&Stop measure", "None"},
    CommandInfo{Command::Text, "Text Item Identifier", "Text", "Text", "Draw some text", "&Text...",
                "Text"},
    CommandInfo{Command::DeleteLast, "Delete Last Item Identifier", "Delete Last", "Delete Last",
                "Delete last measure shape", "&Delete Last", "DelLast"},
    // "Delet" is how this identifier is spelt.
    CommandInfo{Command::DeleteAll, "Delet All Item Identifier", "Delete All", "Delete All",
                "Delete all measure shapes", "D&elete All", "DelAll"},
    CommandInfo{Command::CameraControls, "Camera Controls Item Identifier", "Camera Controls...",
                "Camera Controls", "Exposure, colour and focus of the camera",
                "Camera Con&trols...", "Controls"},
    CommandInfo{Command::Copy, "Copy Item Identifier", "Copy", "Copy",
                "Copy the picture and the measurements", "Cop&y", "Copy"},
};

constexpr ToolbarEntry kFlexibleSpace{true};
constexpr ToolbarEntry item(Command command) { return {false, command}; }

constexpr std::array kToolbarItems{
    item(Command::Help),
    item(Command::Options),
    item(Command::Microscope),
    kFlexibleSpace,
    item(Command::Shutter),
    item(Command::Record),
    item(Command::Folder),
    kFlexibleSpace,
    item(Command::Calibration),
    item(Command::Crosshair),
    item(Command::Grid),
    item(Command::Concentric),
    kFlexibleSpace,
    item(Command::Line),
    item(Command::Line2),
    item(Command::Circle),
    item(Command::Rectangle),
    item(Command::Angle),
    item(Command::Pencil),
    item(Command::Text),
    item(Command::Drag),
    kFlexibleSpace,
    item(Command::DeleteLast),
    item(Command::DeleteAll),
};
static_assert(kToolbarItems.size() == 24);

constexpr std::array kMenuItems{
    MenuEntry{1, 0, Command::Microscope},     MenuEntry{1, 1, Command::Folder},
    MenuEntry{1, 3, Command::Shutter},        MenuEntry{1, 4, Command::Record},
    MenuEntry{1, 6, Command::CameraControls}, MenuEntry{2, 0, Command::Calibration},
    MenuEntry{2, 2, Command::Crosshair},      MenuEntry{2, 3, Command::Grid},
    MenuEntry{2, 4, Command::Concentric},     MenuEntry{2, 6, Command::Line},
    MenuEntry{2, 7, Command::Line2},          MenuEntry{2, 8, Command::Circle},
    MenuEntry{2, 9, Command::Rectangle},      MenuEntry{2, 10, Command::Angle},
    MenuEntry{2, 11, Command::Pencil},        MenuEntry{2, 12, Command::Drag},
    MenuEntry{2, 13, Command::Text},          MenuEntry{2, 15, Command::DeleteLast},
    MenuEntry{2, 16, Command::DeleteAll},     MenuEntry{2, 18, Command::Copy},
};
static_assert(kMenuItems.size() == 20);

}  // namespace

std::span<const CommandInfo> allCommands() { return kCommands; }
std::span<const ToolbarEntry> toolbarDefaultItems() { return kToolbarItems; }
std::span<const MenuEntry> menuItems() { return kMenuItems; }

}  // namespace tessary
