// Icons: ICO files from the system folder (kept for the session) or from a
// volume (freed by FreeIcon), decoded to pixels, drawn through the GUI driver.
#include <algorithm>

#include "env/files/file_driver.h"
#include "env/gui/gui_driver.h"
#include "env/images/ico_decoder.h"
#include "env/windows/window_internal.h"

namespace env {

namespace {

constexpr size_t kMaxIconFile = 16u << 20;

WindowBase::State &S () { return *CurrentWindowBase (); }

// The one place where icon files are decoded.
bool DecodeIcon (const std::vector<uint8_t> &Bytes, bool BySize, unsigned SizeOrIndex, DecodedImage &Out) {
  if (BySize) return DecodeIcoBestSize (Bytes.data (), Bytes.size (), SizeOrIndex, Out);
  return DecodeIcoImage (Bytes.data (), Bytes.size (), SizeOrIndex, Out);
}

std::string FoldCase (const char *Text) {
  std::string Out (Text);
  for (char &C : Out)
    if (C >= 'a' && C <= 'z') C = static_cast<char> (C - 'a' + 'A');
  return Out;
}

UINT8 EFIAPI OpLoadIcon (const CHAR8 *Path, UINT8 Size, UINT8) {
  if (Path == nullptr) return ICON_NONE;
  const char *P = reinterpret_cast<const char *> (Path);
  auto Key = std::make_pair (FoldCase (P), static_cast<unsigned> (Size));
  auto It = S ().SessionIcons.find (Key);
  if (It != S ().SessionIcons.end ()) return It->second;
  std::vector<uint8_t> Bytes;
  DecodedImage Image;
  if (!S ().Files.ReadSystemFile (P, Bytes, kMaxIconFile) || !DecodeIcon (Bytes, true, Size, Image))
    return ICON_NONE;
  UINT8 Id = S ().StoreIcon (std::move (Image), P, true);
  if (Id < ICON_NONE) S ().SessionIcons.emplace (Key, Id);
  return Id;
}

UINT8 EFIAPI OpLoadIconFromFile (UINT8 Volume, const CHAR8 *Path, UINT8, UINT8 Index) {
  if (Path == nullptr) return ICON_NONE;
  const char *P = reinterpret_cast<const char *> (Path);
  std::vector<uint8_t> Bytes;
  DecodedImage Image;
  if (!S ().Files.ReadVolumeFile (Volume, P, Bytes, kMaxIconFile) || !DecodeIcon (Bytes, false, Index, Image))
    return ICON_NONE;
  return S ().StoreIcon (std::move (Image), P, false);
}

const IconSlot *Slot (UINT8 Id) {
  if (Id >= ICON_NONE || !S ().Icons[Id].Used) return nullptr;
  return &S ().Icons[Id];
}

BOOLEAN EFIAPI OpGetIconSize (UINT8 Id, UINT16 *Width, UINT16 *Height) {
  const IconSlot *Icon = Slot (Id);
  if (Icon == nullptr) return FALSE;
  if (Width != nullptr) *Width = static_cast<UINT16> (std::min<uint32_t> (Icon->Image.Width, 0xFFFF));
  if (Height != nullptr) *Height = static_cast<UINT16> (std::min<uint32_t> (Icon->Image.Height, 0xFFFF));
  return TRUE;
}

VOID EFIAPI OpDrawIcon (PAINT_CONTEXT Context, UINT16 X, UINT16 Y, UINT8 Id) {
  const IconSlot *Icon = Slot (Id);
  GUI_DRIVER_PROTOCOL *Gui = S ().Gui.Table ();
  if (Icon == nullptr || Context == nullptr || Gui->DrawPixelsAlpha == nullptr) return;
  const DecodedImage &I = Icon->Image;
  if (I.Width == 0 || I.Height == 0 || I.Width > 0xFFFF || I.Height > 0xFFFF) return;
  if (I.Pixels.size () < static_cast<size_t> (I.Width) * I.Height) return;
  Gui->DrawPixelsAlpha (Context, X, Y, static_cast<UINT16> (I.Width), static_cast<UINT16> (I.Height), I.Pixels.data (),
                        static_cast<UINT16> (I.Width));
}

VOID EFIAPI OpFreeIcon (UINT8 Id) {
  if (Id >= ICON_NONE) return;
  IconSlot &Icon = S ().Icons[Id];
  // Session icons are shared by everyone who loaded the same file.
  if (!Icon.Used || Icon.Session) return;
  Icon = IconSlot {};
}

}  // namespace

uint8_t WindowBase::State::StoreIcon (DecodedImage &&Image, const std::string &Path, bool Session) {
  for (uint8_t Id = 0; Id < ICON_NONE; Id++) {
    if (Icons[Id].Used) continue;
    Icons[Id].Used = true;
    Icons[Id].Session = Session;
    Icons[Id].Path = Path;
    Icons[Id].Image = std::move (Image);
    return Id;
  }
  return kIconTableFull;
}

void FillIconOperations (WINDOW_BASE_PROTOCOL &T) {
  T.LoadIcon = OpLoadIcon;
  T.LoadIconFromFile = OpLoadIconFromFile;
  T.GetIconSize = OpGetIconSize;
  T.DrawIcon = OpDrawIcon;
  T.FreeIcon = OpFreeIcon;
}

std::string WindowBase::IconPath (uint8_t Id) const {
  if (Id >= ICON_NONE || !State_->Icons[Id].Used) return {};
  return State_->Icons[Id].Path;
}

size_t WindowBase::LiveIconCount () const {
  return static_cast<size_t> (
      std::count_if (State_->Icons.begin (), State_->Icons.end (), [] (const IconSlot &I) { return I.Used; }));
}

bool WindowBase::IconImage (uint8_t Id, uint32_t &Width, uint32_t &Height, const uint32_t *&Pixels) const {
  if (Id >= ICON_NONE || !State_->Icons[Id].Used) return false;
  const DecodedImage &I = State_->Icons[Id].Image;
  Width = I.Width;
  Height = I.Height;
  Pixels = I.Pixels.data ();
  return true;
}

}  // namespace env
