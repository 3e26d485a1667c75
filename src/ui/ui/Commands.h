#pragma once
// The commands of the program as data: what the toolbar and the menus show of each.

#include <span>

namespace tessary {

/// One command. Toolbar and menu share it, but for CameraControls and Copy, which are in the menu
/// alone.
enum class Command {
  Help,
  Options,
  Microscope,
  Folder,
  Calibration,
  Crosshair,
  Grid,
  Concentric,
  Shutter,
  Record,
  Line,
  Line2,
  Rectangle,
  Circle,
  Angle,
  Pencil,
  Drag,
  Text,
  DeleteLast,
  DeleteAll,
  CameraControls,
  Copy,
};

struct CommandInfo {
  Command command;
  const char* identifier;
  const char* label;
  const char* paletteLabel;
  const char* toolTip;
  const char* menuTitle;  ///< An "&" before the letter of its key; dots where a dialog opens.
  const char* imageName;
};

/// All twenty-two, each once.
std::span<const CommandInfo> allCommands();

/// One place in the toolbar: a command, or a flexible space.
struct ToolbarEntry {
  bool flexibleSpace = false;
  Command command = Command::Help;
};

/// The toolbar's twenty-four entries in their order.
std::span<const ToolbarEntry> toolbarDefaultItems();

/// One command's place in the main menu, both counted from 0. Positions between are separators.
struct MenuEntry {
  int menu;
  int position;
  Command command;
};

/// The twenty commands that the microscope menu (1) and the measuring menu (2) offer.
std::span<const MenuEntry> menuItems();

}  // namespace tessary
