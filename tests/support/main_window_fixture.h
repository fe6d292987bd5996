// Test support: a fixture for main windows (the file manager of a volume) and
// the helpers their tests share: rows by name, toolbar and File menu states,
// resource texts and message boxes.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "core/strings.h"
#include "env/controls/control_driver.h"
#include "env/files/file_driver.h"
#include "env/settings/settings_service.h"
#include "env/windows/window_base.h"
#include "filemanager/listing.h"
#include "filemanager/main_window.h"
#include "fileops/file_ops.h"
#include "menu_header/menu_header.h"
#include "support/driver_fixture.h"
#include "support/window_views.h"

class MainWindowTest : public DriverTest {
 protected:
  MAIN_WINDOW *Open (int Volume, const std::string &Path = "", UINT16 Width = 0, UINT16 Height = 0) {
    WINDOW_HEADER *W = Surveyor ()->OpenVolumeWindow (Width, Height, static_cast<UINT8> (Volume), nullptr,
                                                      Path.empty () ? nullptr : A8 (Path.c_str ()));
    return reinterpret_cast<MAIN_WINDOW *> (W);
  }
  env::WindowBase &Base () { return Env ().windows (); }
  env::ControlDriver &Controls () { return Env ().controls (); }
  env::SettingsService &Settings () { return *Env ().settings (); }

  // A text of the resource file, as the driver reads it.
  std::string Res (const char *Section, const char *Key) {
    CHAR8 Buffer[256] = {};
    if (!Env ().files ().Table ()->ReadResourceString (A8 (RESOURCE_FILE_PATH), Section ? A8 (Section) : nullptr,
                                                      A8 (Key), Buffer)) {
      return "***";
    }
    return reinterpret_cast<char *> (Buffer);
  }
  // printf-style formatting of a resource format with integer arguments.
  template <typename... Args> std::string Format (const std::string &Fmt, Args... Values) {
    char Buffer[256];
    snprintf (Buffer, sizeof (Buffer), Fmt.c_str (), Values...);
    return Buffer;
  }
  std::vector<std::string> Boxes () { return ShownMessageBoxes (Base ()); }

  std::string Status (MAIN_WINDOW *W, uint8_t Field = 0) { return Base ().StatusText (&W->Header, Field); }
  std::string Cell (MAIN_WINDOW *W, uint8_t Column, uint16_t Row) { return Controls ().CellText (W->List, Column, Row); }
  std::vector<std::string> Names (MAIN_WINDOW *W) {
    std::vector<std::string> Out;
    for (uint16_t R = 0; R < W->List->RowCount; R++) Out.push_back (Cell (W, 0, R));
    return Out;
  }
  uint16_t Row (MAIN_WINDOW *W, const std::string &Name) {
    for (uint16_t R = 0; R < W->List->RowCount; R++)
      if (Cell (W, 0, R) == Name) return R;
    ADD_FAILURE () << "no row " << Name;
    return 0;
  }
  void Select (MAIN_WINDOW *W, const std::vector<std::string> &Names) {
    std::vector<uint16_t> Rows;
    for (const std::string &N : Names) Rows.push_back (Row (W, N));
    Controls ().SelectRows (W->List, Rows);
  }
  void Activate (MAIN_WINDOW *W, const std::string &Name) { Controls ().ActivateRow (W->List, Row (W, Name)); }
  std::string Path (MAIN_WINDOW *W) { return reinterpret_cast<const char *> (W->CurrentPath); }
  // The folder shown and its depth, as "path depth".
  std::string Where (MAIN_WINDOW *W) { return Path (W) + " " + std::to_string (W->Depth); }

  // File popup entry by its resource key, and the toolbar button with a command.
  env::PopupItemInfo FileItem (MAIN_WINDOW *W, const char *Key) {
    std::string Text = Res ("FileMenu", Key);
    for (const env::PopupItemInfo &Item : Base ().PopupItems (W->FilePopup))
      if (!Item.Separator && Item.Text == Text) return Item;
    ADD_FAILURE () << "no File popup item " << Key;
    return {};
  }
  MENU_ITEM *Button (MAIN_WINDOW *W, COMMAND_CALLBACK Command) {
    for (CONTROL *C : Base ().Controls (W->MenuBar))
      if (C->Kind == CONTROL_KIND_MENU_ITEM && reinterpret_cast<MENU_ITEM *> (C)->Command == Command &&
          reinterpret_cast<MENU_ITEM *> (C)->IconId < ICON_NONE)
        return reinterpret_cast<MENU_ITEM *> (C);
    ADD_FAILURE () << "no toolbar button";
    return nullptr;
  }
  bool Enabled (MENU_ITEM *Item) { return Item != nullptr && (Item->Control.Flags & 0x01) != 0; }
  // Whether the commands are enabled, as "name:" with the digit of the toolbar
  // button, then of the File menu item: go up, copy, paste, delete, and new
  // folder (a File menu item only).
  std::string CommandStates (MAIN_WINDOW *W) {
    auto Digit = [] (bool On) { return On ? '1' : '0'; };
    std::string Out;
    const std::pair<COMMAND_CALLBACK, const char *> Commands[] = {
        {GoUpCommand, "gouplayer"}, {CopyCommand, "copy file"}, {PasteCommand, "paste file"},
        {DeleteCommand, "delete"}};
    for (const auto &[Command, Key] : Commands)
      Out += std::string (Key) + ":" + Digit (Enabled (Button (W, Command))) + Digit (FileItem (W, Key).Enabled) + " ";
    return Out + "newdir:" + Digit (FileItem (W, "newdir").Enabled);
  }

  UINTN Send (MAIN_WINDOW *W, MESSAGE Message) { return Wb ()->SendMessage (&W->Header, &Message); }
  void Close (WINDOW_HEADER *W) {
    Base ().SendSysCommand (W, SYSCMD_CLOSE);
    Base ().PumpMessages ();
  }
  void Close (MAIN_WINDOW *W) { Close (&W->Header); }
};
