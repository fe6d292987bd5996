#include "env/render/renderer.h"

#include <algorithm>
#include <cstring>
#include <set>

#include "env/controls/control_driver.h"
#include "env/gui/font.h"
#include "env/siblings.h"
#include "env/gui/gui_driver.h"
#include "env/windows/window_base.h"
#include "env/windows/window_internal.h"

namespace env {

namespace {

constexpr int kStatusPadding = 8;
constexpr int kIconSize = 16;
constexpr uint32_t kTooltipColour = 0xFFFFE1;
constexpr const char *kOkText = "OK";
constexpr int kEllipsisWidth = 8;        // "…" takes one narrow cell
constexpr int kNarrowCell = 8;           // a one-byte character's cell
constexpr int kLabelMargin = 4;          // between a button's edge and its label

// Bytes of the GBK character at At: two for a lead byte with a byte after it.
size_t CharLength (const std::string &T, size_t At) {
  return static_cast<unsigned char> (T[At]) >= 0x81 && At + 1 < T.size () ? 2 : 1;
}

// Lines of at most Width pixels: broken after a space, or before any
// character when a word is wider than the line; two-byte characters stay
// whole, and the text's own line breaks are kept.
std::vector<std::string> WrapText (const std::string &Text, int Width) {
  std::vector<std::string> Lines;
  size_t Start = 0;
  while (Start <= Text.size ()) {
    size_t End = Text.find ('\n', Start);
    std::string Para = Text.substr (Start, End == std::string::npos ? std::string::npos : End - Start);
    if (!Para.empty () && Para.back () == '\r') Para.pop_back ();
    std::string Line;
    int Used = 0;
    size_t LastSpace = std::string::npos;
    for (size_t I = 0; I < Para.size ();) {
      size_t Len = CharLength (Para, I);
      int Cw = GuiDriver::TextWidth (Para.substr (I, Len));
      if (Used + Cw > Width && !Line.empty ()) {
        if (LastSpace != std::string::npos) {
          // Break at the last space: what follows it starts the next line.
          std::string Rest = Line.substr (LastSpace + 1);
          Line.erase (LastSpace);
          Lines.push_back (Line);
          Line = Rest;
        } else {
          Lines.push_back (Line);
          Line.clear ();
        }
        Used = GuiDriver::TextWidth (Line);
        LastSpace = std::string::npos;
        if (Para[I] == ' ' && Line.empty ()) {
          I++;
          continue;
        }
      }
      if (Para[I] == ' ') LastSpace = Line.size ();
      Line += Para.substr (I, Len);
      Used += Cw;
      I += Len;
    }
    Lines.push_back (Line);
    if (End == std::string::npos) break;
    Start = End + 1;
  }
  return Lines;
}

std::string Str (const CHAR8 *Bytes, size_t Max) {
  const char *P = reinterpret_cast<const char *> (Bytes);
  return std::string (P, strnlen (P, Max));
}

class Painter {
 public:
  explicit Painter (Siblings &E)
      : Env (E), Gui (E.gui ()), Wb (E.windows ()), Cd (E.controls ()), Lh (Gui.Table ()->GetLineHeight ()) {}

  size_t Run () {
    Gui.Clear (kDesktopColour);
    Wb.SetPaintHook ([this] (WINDOW_HEADER *W, PaintContext &Ctx) { DefaultPaint (W, Ctx); });
    size_t Count = 0;
    for (WINDOW_HEADER *W : Wb.TopLevelWindows ()) {
      if (!Wb.IsWindow (W)) continue;   // closed by an earlier window's painting
      PaintWindow (W, true);
      Count++;
    }
    if (WINDOW_HEADER *Popup = Wb.ShownPopup ()) PaintPopup (Popup);
    TooltipInfo Tip;
    if (Wb.ShownTooltip (Tip) || Cd.ShownCellTip (Tip)) PaintTooltip (Tip);
    if (const MessageBoxRecord *Box = Wb.OpenMessageBox ()) PaintMessageBox (*Box);
    Wb.SetPaintHook (nullptr);
    return Count;
  }

 private:
  Siblings &Env;
  GuiDriver &Gui;
  WindowBase &Wb;
  ControlDriver &Cd;
  int Lh;

  // ------------------------------------------------------------- helpers

  PaintContext Clip (int X, int Y, int W, int H) const {
    PaintContext C;
    C.ClipX = X, C.ClipY = Y, C.ClipWidth = std::max (W, 0), C.ClipHeight = std::max (H, 0);
    C.OriginX = X, C.OriginY = Y;
    return C;
  }
  static PaintContext Intersect (const PaintContext &A, const PaintContext &B) {
    PaintContext C = A;
    int X0 = std::max (A.ClipX, B.ClipX), Y0 = std::max (A.ClipY, B.ClipY);
    int X1 = std::min (A.ClipX + A.ClipWidth, B.ClipX + B.ClipWidth);
    int Y1 = std::min (A.ClipY + A.ClipHeight, B.ClipY + B.ClipHeight);
    C.ClipX = X0, C.ClipY = Y0, C.ClipWidth = std::max (X1 - X0, 0), C.ClipHeight = std::max (Y1 - Y0, 0);
    return C;
  }

  // Raised (buttons, title bars) or sunken (fields, lists) 3-D edges.
  void Bevel (const PaintContext &C, int X, int Y, int W, int H, bool Raised) {
    uint32_t TopLeft = Raised ? colours::Light : colours::Shadow;
    uint32_t BottomRight = Raised ? colours::DarkShadow : colours::Light;
    Gui.FillRect (C, X, Y, W, 1, TopLeft);
    Gui.FillRect (C, X, Y, 1, H, TopLeft);
    Gui.FillRect (C, X, Y + H - 1, W, 1, BottomRight);
    Gui.FillRect (C, X + W - 1, Y, 1, H, BottomRight);
    if (Raised && W > 2 && H > 2) {
      Gui.FillRect (C, X + 1, Y + H - 2, W - 2, 1, colours::Shadow);
      Gui.FillRect (C, X + W - 2, Y + 1, 1, H - 2, colours::Shadow);
    }
  }

  void Text (const PaintContext &C, int X, int Y, const std::string &T, uint32_t Colour) {
    Gui.DrawText (C, X, Y, T, Colour);
  }
  // A text in W pixels from X: whole when it fits, else as many whole
  // characters as leave room for "…" after them. Returns the width drawn.
  int TextIn (const PaintContext &C, int X, int Y, int W, const std::string &T, uint32_t Colour) {
    PaintContext Box = Intersect (C, Clip (X, Y, W, Lh));
    if (GuiDriver::TextWidth (T) <= W) return Gui.DrawText (Box, X, Y, T, Colour);
    if (W < kEllipsisWidth) return 0;
    int Drawn = Gui.DrawText (Box, X, Y, Fit (T, W - kEllipsisWidth), Colour);
    Ellipsis (Box, X + Drawn, Y, Colour);
    return Drawn + kEllipsisWidth;
  }
  // "…" as the font draws it (U+2026): dots of 1 x 2 pixels in columns 1, 4
  // and 7 of a narrow cell, on the baseline.
  void Ellipsis (const PaintContext &C, int X, int Y, uint32_t Colour) {
    for (int Dot : {1, 4, 7}) Gui.FillRect (C, X + Dot, Y + Lh - 4, 1, 2, Colour);
  }
  // The longest start of T, in whole characters, that fits in W pixels.
  static std::string Fit (const std::string &T, int W) {
    if (GuiDriver::TextWidth (T) <= W) return T;
    size_t End = 0;
    int Used = 0;
    while (End < T.size ()) {
      size_t Len = CharLength (T, End);
      int Cw = GuiDriver::TextWidth (T.substr (End, Len));
      if (Used + Cw > W) break;
      Used += Cw;
      End += Len;
    }
    return T.substr (0, End);
  }
  // The longest end of T, in whole characters, that fits in W pixels.
  static std::string FitEnd (const std::string &T, int W) {
    size_t Start = 0;
    while (Start < T.size () && GuiDriver::TextWidth (T.substr (Start)) > W) Start += CharLength (T, Start);
    return T.substr (Start);
  }

  // A button's label, centred. A label wider than the button's face is drawn
  // condensed (each letter's ink, one pixel apart) when that fits, else cut.
  void Label (const PaintContext &C, int X, int Y, int W, int H, const std::string &T, uint32_t Colour) {
    int Room = W - 2 * kLabelMargin;
    int Ty = Y + (H - Lh) / 2;
    int Tw = GuiDriver::TextWidth (T);
    if (Tw <= Room) {
      Text (C, X + (W - Tw) / 2, Ty, T, Colour);
      return;
    }
    int Condensed = CondensedWidth (T);
    if (Condensed <= W - 4) {
      CondensedText (C, X + (W - Condensed) / 2, Ty, T, Colour);
      return;
    }
    TextIn (C, X + kLabelMargin, Ty, Room, T, Colour);
  }
  // Ink columns of a one-byte character's glyph; a blank one (the space) keeps half its cell.
  static void InkOf (unsigned char Ch, int &Left, int &Width) {
    Glyph Found;
    const Glyph *G = FindGlyph (Ch, Found) ? &Found : nullptr;
    Left = 0, Width = 0;
    int Right = -1;
    if (G != nullptr && G->Width == kNarrowCell)
      for (int Col = 0; Col < kNarrowCell; Col++)
        for (unsigned Row = 0; Row < kFontHeight; Row++)
          if (G->Pixel (Col, Row)) {
            if (Right < 0) Left = Col;
            Right = Col;
            break;
          }
    Width = Right < 0 ? kNarrowCell / 2 : Right - Left + 1;
  }
  static int CondensedWidth (const std::string &T) {
    int W = 0;
    for (size_t I = 0; I < T.size (); I += CharLength (T, I)) {
      int Left, Ink;
      if (CharLength (T, I) == 2) Ink = GuiDriver::TextWidth (T.substr (I, 2));
      else InkOf (static_cast<unsigned char> (T[I]), Left, Ink);
      W += (I > 0) + Ink;
    }
    return W;
  }
  void CondensedText (const PaintContext &C, int X, int Y, const std::string &T, uint32_t Colour) {
    for (size_t I = 0; I < T.size (); I += CharLength (T, I)) {
      std::string Ch = T.substr (I, CharLength (T, I));
      int Left = 0, Ink = GuiDriver::TextWidth (Ch);
      if (Ch.size () == 1) InkOf (static_cast<unsigned char> (Ch[0]), Left, Ink);
      if (I > 0) X++;
      Gui.DrawText (Intersect (C, Clip (X, Y, Ink, Lh)), X - Left, Y, Ch, Colour);
      X += Ink;
    }
  }

  void Icon (const PaintContext &C, int X, int Y, uint8_t Id, int Size, bool Greyed = false) {
    uint32_t W = 0, H = 0;
    const uint32_t *Px = nullptr;
    if (Id >= ICON_NONE || !Wb.IconImage (Id, W, H, Px) || !Px || !W || !H) return;
    std::vector<uint32_t> Buffer;
    if (Size > 0 && (W != uint32_t (Size) || H != uint32_t (Size))) {
      Buffer.resize (size_t (Size) * Size);
      ScalePixels (Px, W, H, Buffer.data (), Size, Size);
      Px = Buffer.data (), W = H = Size;
    }
    if (Greyed) {
      if (Buffer.empty ()) Buffer.assign (Px, Px + size_t (W) * H), Px = Buffer.data ();
      for (uint32_t &P : Buffer) {
        uint32_t A = P >> 24, R = (P >> 16) & 0xFF, G = (P >> 8) & 0xFF, B = P & 0xFF;
        uint32_t L = (R * 30 + G * 59 + B * 11) / 100;
        L = 128 + L / 2;
        P = ((A / 2) << 24) | (L << 16) | (L << 8) | L;
      }
    }
    Gui.DrawPixels (C, X, Y, W, H, Px, W, true);
  }

  void Origin (const void *Target, int &X, int &Y) {
    int32_t Ox = 0, Oy = 0;
    Wb.ScreenOrigin (Target, Ox, Oy);
    X = Ox, Y = Oy;
  }

  // --------------------------------------------------------------- windows

  void PaintWindow (WINDOW_HEADER *W, bool TopLevel) {
    MESSAGE Paint {};
    Paint.Type = MSG_PAINT;
    if (W->Paint) {
      W->Paint (W, &Paint, nullptr);
    } else {
      int X, Y;
      Origin (W, X, Y);
      PaintContext C = Clip (X, Y, W->Width, W->Height);
      DefaultPaint (W, C);
    }
    if (!Wb.IsWindow (W)) return;
    int X, Y;
    Origin (W, X, Y);
    int32_t Vx = 0, Vy = 0, Vw = 0, Vh = 0;
    Wb.Internal ().VisibleRect (W, Vx, Vy, Vw, Vh);
    PaintContext C = Clip (Vx, Vy, Vw, Vh);
    if (TopLevel) {
      WindowLayout L = LayoutOf (Env, W);
      C = Clip (X + 1, Y + L.CaptionHeight, W->Width - 2, W->Height - L.CaptionHeight - 1);
      PaintControls (W, C);
      PaintStatus (W, L);
    } else {
      PaintControls (W, C);
    }
    for (WINDOW_HEADER *Child : Wb.ChildWindows (W)) {
      if (Wb.IsWindow (Child)) PaintWindow (Child, false);
    }
    if (TopLevel && Wb.IsWindow (W)) {
      // The outline last, over whatever the client painting covered.
      PaintContext Whole = Clip (X, Y, W->Width, W->Height);
      Gui.FrameRect (Whole, X, Y, W->Width, W->Height, colours::DarkShadow);
    }
  }

  // What DefaultPaint draws: frame, title bar and background for top-level
  // windows, the face colour for child windows.
  void DefaultPaint (WINDOW_HEADER *W, PaintContext &Ctx) {
    int X = Ctx.OriginX, Y = Ctx.OriginY;
    if (W->Kind == WINDOW_KIND_POPUP) return;
    bool TopLevel = W->Parent == Wb.Table ()->Desktop || W->Parent == nullptr;
    Gui.FillRect (Ctx, X, Y, W->Width, W->Height, colours::Face);
    if (!TopLevel) return;
    WindowLayout L = LayoutOf (Env, W);
    Bevel (Ctx, X, Y, W->Width, W->Height, true);
    bool Active = Wb.ActiveWindow () == W;
    Gui.FillRect (Ctx, X + 2, Y + 2, W->Width - 4, L.CaptionHeight - 3,
                  Active ? colours::ActiveCaption : colours::InactiveCaption);
    int TextX = X + 6;
    if (W->IconId < ICON_NONE) {
      Icon (Ctx, X + 5, Y + (L.CaptionHeight - kIconSize) / 2, W->IconId, kIconSize);
      TextX = X + 5 + kIconSize + 4;
    }
    TextIn (Ctx, TextX, Y + (L.CaptionHeight - Lh) / 2, L.CloseX - 4 - TextX, Str (W->Title, sizeof W->Title),
            colours::CaptionText);
    // The close box.
    Gui.FillRect (Ctx, L.CloseX, L.CloseY, L.CloseWidth, L.CloseHeight, colours::Face);
    Bevel (Ctx, L.CloseX, L.CloseY, L.CloseWidth, L.CloseHeight, true);
    int Cx = L.CloseX + L.CloseWidth / 2, Cy = L.CloseY + L.CloseHeight / 2;
    for (int D = 0; D < 2; D++) {
      Gui.DrawLine (Ctx, Cx - 4 + D, Cy - 3, Cx + 2 + D, Cy + 3, colours::Text);
      Gui.DrawLine (Ctx, Cx + 2 + D, Cy - 3, Cx - 4 + D, Cy + 3, colours::Text);
    }
  }

  void PaintStatus (WINDOW_HEADER *W, const WindowLayout &L) {
    if (L.StatusHeight == 0) return;
    unsigned Fields = Wb.StatusFieldCount (W);
    PaintContext C = Clip (L.X, L.StatusY, L.Width, L.StatusHeight);
    Gui.FillRect (C, L.X + 1, L.StatusY, L.Width - 2, L.StatusHeight - 1, colours::Face);
    int Inner = L.Width - 4;
    // The first field takes the larger share: it carries the longer texts.
    // The others share a third, each at least as wide as its own text.
    std::vector<int> Widths (Fields, 0);
    int Others = 0;
    for (unsigned F = 1; F < Fields; F++) {
      Widths[F] = std::max (Inner / 3 / int (Fields - 1), GuiDriver::TextWidth (Wb.StatusText (W, F)) + 10);
      Others += Widths[F];
    }
    Widths[0] = std::max (0, Inner - Others);
    int Fx = L.X + 2;
    for (unsigned F = 0; F < Fields; F++) {
      int Fw = Widths[F] - 2;
      Bevel (C, Fx, L.StatusY + 2, Fw, L.StatusHeight - 4, false);
      TextIn (C, Fx + 4, L.StatusY + (L.StatusHeight - Lh) / 2, Fw - 8, Wb.StatusText (W, F), colours::Text);
      Fx += Widths[F];
    }
  }

  // -------------------------------------------------------------- controls

  void PaintControls (WINDOW_HEADER *W, const PaintContext &Area) {
    std::set<const void *> ScrollBars;
    std::vector<CONTROL *> Controls = Wb.Controls (W);
    for (CONTROL *C : Controls) {
      if (C->Kind == CONTROL_KIND_LIST) {
        auto *L = reinterpret_cast<LIST_CONTROL *> (C);
        if (L->ScrollBar) ScrollBars.insert (L->ScrollBar);
      }
    }
    for (CONTROL *C : Controls) {
      if (!Wb.IsControl (C) || ScrollBars.count (C)) continue;
      PaintControl (C, Area);
    }
    // In-place edits of list rows and tree items are kept out of the chain;
    // they lie over their list.
    for (auto &Entry : Wb.Internal ().ControlMap) {
      CONTROL *C = Entry.second ? Entry.second->Rec : nullptr;
      if (C && C->Kind == CONTROL_KIND_EDIT && C->Parent == W && !Entry.second->InChain) PaintControl (C, Area);
    }
  }

  void PaintControl (CONTROL *Ctl, const PaintContext &Area) {
    int X, Y;
    Origin (Ctl, X, Y);
    int W = Ctl->Width, H = Ctl->Height;
    PaintContext C = Intersect (Area, Clip (X, Y, W, H));
    std::string T = Ctl->Text ? reinterpret_cast<const char *> (Ctl->Text) : "";
    switch (Ctl->Kind) {
      case CONTROL_KIND_TEXT_FIELD:
        if (Ctl->Flags & kControlFramed) {
          Gui.FillRect (C, X, Y, W, H, colours::Window);
          Bevel (C, X, Y, W, H, false);
          TextIn (C, X + 4, Y + (H - Lh) / 2, W - 8, T, colours::Text);
        } else {
          // A label made 0 wide is as wide as its text.
          if (W == 0) W = GuiDriver::TextWidth (T), C = Intersect (Area, Clip (X, Y, W, H));
          TextIn (C, X, Y + (H - Lh) / 2, W, T, colours::Text);
        }
        break;
      case CONTROL_KIND_BUTTON: {
        bool Pressed = Ctl->State == 1;
        Gui.FillRect (C, X, Y, W, H, colours::Face);
        Bevel (C, X, Y, W, H, !Pressed);
        Label (C, X + Pressed, Y + Pressed, W, H, T, colours::Text);
        break;
      }
      case CONTROL_KIND_MENU_ITEM:
        PaintMenuButton (reinterpret_cast<MENU_ITEM *> (Ctl), C, X, Y, W, H);
        break;
      case CONTROL_KIND_LIST:
        PaintList (reinterpret_cast<LIST_CONTROL *> (Ctl), C, X, Y, W, H);
        break;
      case CONTROL_KIND_TEXT_VIEW:
        PaintTextView (Ctl, C, X, Y, W, H);
        break;
      case CONTROL_KIND_COMBO:
        PaintCombo (reinterpret_cast<COMBO_BOX *> (Ctl), Area, C, X, Y, W, H);
        break;
      case CONTROL_KIND_FILE_LIST:
        PaintTree (reinterpret_cast<FILE_LIST *> (Ctl), C, X, Y, W, H);
        break;
      case CONTROL_KIND_LOG_VIEW:
        PaintLog (reinterpret_cast<LOG_VIEW *> (Ctl), C, X, Y, W, H);
        break;
      case CONTROL_KIND_EDIT: {
        Gui.FillRect (C, X, Y, W, H, colours::Window);
        Gui.FrameRect (C, X, Y, W, H, colours::Text);
        // The end of a long text shows, with the caret after it.
        int Room = W - 2 * kEditTextMargin - 1;
        std::string Shown = FitEnd (T, Room);
        int Tx = X + kEditTextMargin, Ty = Y + (H - Lh) / 2;
        Text (Intersect (C, Clip (Tx, Ty, Room, Lh)), Tx, Ty, Shown, colours::Text);
        Gui.FillRect (C, Tx + GuiDriver::TextWidth (Shown), Ty, 1, Lh, colours::Text);
        break;
      }
      case CONTROL_KIND_SCROLL_BAR:
        ScrollBar (C, X, Y, W, H, 1, 1, 0);
        break;
      default:
        break;
    }
  }

  void PaintMenuButton (MENU_ITEM *Item, const PaintContext &C, int X, int Y, int W, int H) {
    bool Enabled = Item->Control.Flags & WINDOW_FLAG_ENABLED;
    // A menu title is also highlighted while its popup is open.
    bool Highlighted = Item->Control.State == 2 || (Item->Popup && Item->Popup == Wb.ShownPopup ());
    if (Item->IconId < ICON_NONE) {
      if (Highlighted) Bevel (C, X, Y, W, H, true);
      int S = std::min ({W - 4, H - 4, 32});
      int Size = S >= 24 ? 24 : kIconSize;
      Icon (C, X + (W - Size) / 2, Y + (H - Size) / 2, Item->IconId, Size, !Enabled);
      return;
    }
    std::string T = Item->Control.Text ? reinterpret_cast<const char *> (Item->Control.Text) : "";
    if (Highlighted) Gui.FillRect (C, X, Y, W, H, colours::Selection);
    uint32_t Colour = !Enabled ? colours::GreyText : Highlighted ? colours::SelectionText : colours::Text;
    if (!Enabled) Label (C, X + 1, Y + 1, W, H, T, colours::Light);
    Label (C, X, Y, W, H, T, Colour);
  }

  // A scroll bar: arrows at both ends and a thumb for the part in view (of
  // Total rows or pixels, Visible of them from Top); Sideways lies along the
  // bottom with arrows pointing left and right.
  void ScrollBar (const PaintContext &C, int X, int Y, int W, int H, unsigned Total, unsigned Visible, unsigned Top,
                  bool Sideways = false) {
    Gui.FillRect (C, X, Y, W, H, 0xE8E8E8);
    int Length = Sideways ? W : H, Across = Sideways ? H : W;
    int Arrow = std::min (Across, Length / 2);
    for (int End = 0; End < 2; End++) {
      int At = End == 0 ? 0 : Length - Arrow;
      int Ax = Sideways ? X + At : X, Ay = Sideways ? Y : Y + At;
      int Aw = Sideways ? Arrow : W, Ah = Sideways ? H : Arrow;
      Gui.FillRect (C, Ax, Ay, Aw, Ah, colours::Face);
      Bevel (C, Ax, Ay, Aw, Ah, true);
      int Cx = Ax + Aw / 2, Cy = Ay + Ah / 2;
      for (int I = 0; I < 4; I++) {
        int Step = End == 0 ? -2 + I : 1 - I;   // the tip towards the bar's end
        if (Sideways) Gui.FillRect (C, Cx + Step, Cy - I, 1, 2 * I + 1, colours::Text);
        else Gui.FillRect (C, Cx - I, Cy + Step, 2 * I + 1, 1, colours::Text);
      }
    }
    int Track = Length - 2 * Arrow;
    if (Track <= 0 || Total == 0 || Visible >= Total) return;
    int Thumb = std::max (8, int (int64_t (Track) * Visible / Total));
    Thumb = std::min (Thumb, Track);
    int Pos = Arrow + int (int64_t (Track - Thumb) * std::min (Top, Total - Visible) / std::max (1u, Total - Visible));
    int Tx = Sideways ? X + Pos : X, Ty = Sideways ? Y : Y + Pos;
    Gui.FillRect (C, Tx, Ty, Sideways ? Thumb : W, Sideways ? H : Thumb, colours::Face);
    Bevel (C, Tx, Ty, Sideways ? Thumb : W, Sideways ? H : Thumb, true);
  }

  // A fixed-pitch table: the offset column on a gutter, thin rules in the
  // wider gaps between groups of columns.
  static constexpr uint32_t kGutter = 0xF0F0F0;
  static constexpr uint32_t kGroupRule = 0xC8C8C8;

  void PaintList (LIST_CONTROL *L, const PaintContext &Area, int X, int Y, int W, int H) {
    Gui.FillRect (Area, X, Y, W, H, colours::Window);
    Bevel (Area, X, Y, W, H, false);
    ListGeometry G = Cd.Geometry (L);
    std::vector<ListColumnInfo> Cols = Cd.Columns (L);
    std::vector<ListColumnSpan> Spans = G.Columns;
    if (Spans.empty ()) {
      // Without columns the rows' names go across the view.
      ListColumnSpan Whole;
      Whole.Width = G.ViewWidth;
      Whole.TextX = 4 + (G.Icons ? kListIconRoom : 0);
      Whole.TextWidth = Whole.Width - Whole.TextX - 4;
      Spans.push_back (Whole);
    }
    const int ViewX = X + G.ViewX, Left = ViewX - G.ScrollX;

    // The title row, scrolled with the columns: a button per column, or one
    // plain row over a fixed-pitch table (whose titles line up with its data).
    int HeadY = Y + G.HeaderY, HeadH = G.HeaderHeight;
    PaintContext Head = Intersect (Area, Clip (ViewX, HeadY, G.ViewWidth, HeadH));
    if (G.FixedPitch) {
      Gui.FillRect (Head, ViewX, HeadY, G.ViewWidth, HeadH, colours::Face);
      Bevel (Head, ViewX, HeadY, G.ViewWidth, HeadH, true);
    }
    for (size_t I = 0; I < Cols.size (); I++) {
      const ListColumnSpan &S = Spans[I];
      if (!G.FixedPitch) {
        Gui.FillRect (Head, Left + S.X, HeadY, S.Width, HeadH, colours::Face);
        Bevel (Head, Left + S.X, HeadY, S.Width, HeadH, true);
      }
      int IconRoom = I == 0 && G.Icons ? kListIconRoom : 0;   // the title also takes the icons' room
      TextIn (Head, Left + S.TextX - IconRoom, HeadY + (HeadH - Lh) / 2, S.TextWidth + IconRoom, Cols[I].Title,
              colours::Text);
    }
    int HeadEnd = Cols.empty () ? ViewX : Left + G.ContentWidth;
    if (!G.FixedPitch && HeadEnd < ViewX + G.ViewWidth) {
      Gui.FillRect (Head, HeadEnd, HeadY, ViewX + G.ViewWidth - HeadEnd, HeadH, colours::Face);
      Bevel (Head, HeadEnd, HeadY, ViewX + G.ViewWidth - HeadEnd, HeadH, true);
    }

    // The rows.
    const int RowsY = Y + G.RowsY, RowH = G.RowHeight;
    PaintContext Body = Intersect (Area, Clip (ViewX, RowsY, G.ViewWidth, G.RowsHeight));
    if (G.FixedPitch) PaintGroups (Body, Spans, Left, RowsY, G.RowsHeight);
    std::vector<uint16_t> Sel = Cd.SelectedRows (L);
    std::set<uint16_t> Selected (Sel.begin (), Sel.end ());
    uint16_t EditRow = Cd.EditRow (L);
    auto *GetItem = Cd.Table ()->GetItem;
    int Ry = RowsY;
    for (unsigned Row = L->TopRow; Row < L->RowCount && Ry < RowsY + G.RowsHeight; Row++, Ry += RowH) {
      bool IsSel = !G.FixedPitch && Selected.count (Row);
      if (IsSel) Gui.FillRect (Body, ViewX, Ry, G.ViewWidth, RowH, colours::Selection);
      uint32_t Colour = IsSel ? colours::SelectionText : colours::Text;
      int Ty = Ry + (RowH - Lh) / 2;
      for (size_t Col = 0; Col < Spans.size (); Col++) {
        const ListColumnSpan &S = Spans[Col];
        if (Col == 0 && G.Icons) {
          LIST_ITEM *Item = GetItem ? GetItem (L, static_cast<UINT16> (Row)) : nullptr;
          if (Item && Item->Icon < ICON_NONE)
            Icon (Body, Left + S.TextX - kListIconRoom, Ry + (RowH - kIconSize) / 2, Item->Icon, kIconSize);
        }
        if (Col == 0 && Row == EditRow) continue;   // the edit lies over it
        std::string Cell = Cd.CellText (L, static_cast<uint8_t> (Col), static_cast<uint16_t> (Row));
        int Tx = Left + S.TextX;
        bool Right = Col < Cols.size () && Cols[Col].RightAligned;
        if (Right) Tx += std::max (0, S.TextWidth - GuiDriver::TextWidth (Cell));
        TextIn (Body, Tx, Ty, Left + S.TextX + S.TextWidth - Tx, Cell, Colour);
      }
      if (!G.FixedPitch && Row == L->CurrentRow && !IsSel) {
        // Focus mark of the current row: a dotted outline.
        for (int Dx = 0; Dx < G.ViewWidth; Dx += 2) {
          Gui.SetPixel (Body, ViewX + Dx, Ry, colours::Shadow);
          Gui.SetPixel (Body, ViewX + Dx, Ry + RowH - 1, colours::Shadow);
        }
      }
    }

    // The scroll bars, and the corner between them.
    const int Bar = kListScrollBarWidth;
    if (G.VerticalBar)
      ScrollBar (Area, ViewX + G.ViewWidth, HeadY, Bar, HeadH + G.RowsHeight, L->RowCount, L->VisibleRows, L->TopRow);
    if (G.HorizontalBar)
      ScrollBar (Area, ViewX, RowsY + G.RowsHeight, G.ViewWidth, Bar, G.ContentWidth, G.ViewWidth, G.ScrollX, true);
    if (G.VerticalBar && G.HorizontalBar)
      Gui.FillRect (Area, ViewX + G.ViewWidth, RowsY + G.RowsHeight, Bar, Bar, colours::Face);
  }

  // The gutter under the first column and a rule in every wider gap.
  void PaintGroups (const PaintContext &C, const std::vector<ListColumnSpan> &Spans, int Left, int Y, int H) {
    Gui.FillRect (C, Left + Spans[0].X, Y, Spans[0].Width, H, kGutter);
    for (size_t I = 0; I + 1 < Spans.size (); I++)
      if (Spans[I].GroupEnd) {
        int GapStart = Spans[I].TextX + Spans[I].TextWidth, GapEnd = Spans[I + 1].TextX;
        Gui.FillRect (C, Left + (GapStart + GapEnd) / 2, Y, 1, H, kGroupRule);
      }
  }

  void PaintTextView (CONTROL *Ctl, const PaintContext &Area, int X, int Y, int W, int H) {
    Gui.FillRect (Area, X, Y, W, H, colours::Window);
    Bevel (Area, X, Y, W, H, false);
    PaintContext C = Intersect (Area, Clip (X + 2, Y + 2, W - 4, H - 4));
    std::string All = Cd.TextViewText (Ctl);
    int Ly = Y + 3, MaxW = W - 8;
    std::string Line;
    auto Flush = [&] (size_t Count) {
      Text (C, X + 4, Ly, Line.substr (0, Count), colours::Text);
      Line.erase (0, Count);
      while (!Line.empty () && Line[0] == ' ') Line.erase (0, 1);
      Ly += Lh;
    };
    // Lines break at line feeds and wrap at the right edge: after the last
    // space that fits, else before the character that does not (never
    // inside a double-byte character).
    for (size_t I = 0; I < All.size () && Ly < Y + H; I++) {
      unsigned char B = All[I];
      if (B == '\r') continue;
      if (B == '\n') {
        Flush (Line.size ());
        continue;
      }
      size_t Len = B >= 0x81 && I + 1 < All.size () ? 2 : 1;
      std::string Ch = All.substr (I, Len);
      if (GuiDriver::TextWidth (Line + Ch) > MaxW && !Line.empty () && Ch != " ") {
        size_t Space = Line.rfind (' ');
        Flush (Space != std::string::npos && Space > 0 ? Space : Line.size ());
      }
      Line += Ch;
      I += Len - 1;
    }
    while (!Line.empty () && Ly < Y + H) {
      std::string Part = Fit (Line, MaxW);
      size_t Space = Part.size () < Line.size () ? Part.rfind (' ') : std::string::npos;
      Flush (Space != std::string::npos && Space > 0 ? Space : std::max<size_t> (Part.size (), 1));
    }
  }

  void PaintCombo (COMBO_BOX *Combo, const PaintContext &Area, const PaintContext &C, int X, int Y, int W, int H) {
    int BoxH = std::min (H, Lh + 8);
    Gui.FillRect (C, X, Y, W, BoxH, colours::Window);
    Bevel (C, X, Y, W, BoxH, false);
    std::string T = Combo->Control.Text ? reinterpret_cast<const char *> (Combo->Control.Text) : "";
    std::vector<std::string> Items = Cd.ComboItems (Combo);
    if (T.empty () && Combo->CurrentRow < Items.size ()) T = Items[Combo->CurrentRow];
    TextIn (C, X + 4, Y + (BoxH - Lh) / 2, W - BoxH - 6, T, colours::Text);
    int Bx = X + W - BoxH + 1;
    Gui.FillRect (C, Bx, Y + 2, BoxH - 3, BoxH - 4, colours::Face);
    Bevel (C, Bx, Y + 2, BoxH - 3, BoxH - 4, true);
    int Cx = Bx + (BoxH - 3) / 2, Cy = Y + BoxH / 2 - 1;
    for (int I = 0; I < 4; I++) Gui.FillRect (C, Cx - 3 + I, Cy + I, 7 - 2 * I, 1, colours::Text);
    if (!Combo->Open) return;
    // The drop-down list below the box, over whatever lies there.
    int RowH = Lh + 4, ListH = int (Items.size ()) * RowH + 2;
    PaintContext Drop = Gui.ScreenContext ();
    Gui.FillRect (Drop, X, Y + BoxH, W, ListH, colours::Window);
    Gui.FrameRect (Drop, X, Y + BoxH, W, ListH, colours::Text);
    for (size_t I = 0; I < Items.size (); I++) {
      int Ry = Y + BoxH + 1 + int (I) * RowH;
      bool Chosen = I == Combo->CurrentRow;
      if (Chosen) Gui.FillRect (Drop, X + 1, Ry, W - 2, RowH, colours::Selection);
      TextIn (Drop, X + 4, Ry + 2, W - 8, Items[I], Chosen ? colours::SelectionText : colours::Text);
    }
    (void)Area;
  }

  void PaintTree (FILE_LIST *Tree, const PaintContext &Area, int X, int Y, int W, int H) {
    Gui.FillRect (Area, X, Y, W, H, colours::Window);
    Bevel (Area, X, Y, W, H, false);
    PaintContext C = Intersect (Area, Clip (X + 2, Y + 2, W - 4, H - 4));
    std::vector<FILE_LIST_ITEM> Items = Cd.TreeItems (Tree);
    int RowH = Lh + 2, Ry = Y + 2;
    for (size_t I = Tree->TopItem; I < Items.size () && Ry < Y + H; I++, Ry += RowH) {
      const FILE_LIST_ITEM &It = Items[I];
      int Ix = X + 4 + It.Depth * 16;
      if (It.HasChildren) {
        int Bx = Ix, By = Ry + (RowH - 9) / 2;
        Gui.FillRect (C, Bx, By, 9, 9, colours::Window);
        Gui.FrameRect (C, Bx, By, 9, 9, colours::Shadow);
        Gui.FillRect (C, Bx + 2, By + 4, 5, 1, colours::Text);
        if (!It.Expanded) Gui.FillRect (C, Bx + 4, By + 2, 1, 5, colours::Text);
      }
      Ix += 12;
      if (It.Icon < ICON_NONE) Icon (C, Ix, Ry + (RowH - kIconSize) / 2, It.Icon, kIconSize);
      Ix += kIconSize + 4;
      std::string Name = Str (It.Name, sizeof It.Name);
      bool Sel = I == Tree->SelectedItem;
      int Room = X + W - 4 - Ix;
      int Tw = std::min (GuiDriver::TextWidth (Name), Room);
      if (Sel) Gui.FillRect (C, Ix - 2, Ry, Tw + 4, RowH, colours::Selection);
      TextIn (C, Ix, Ry + 1, Room, Name, Sel ? colours::SelectionText : colours::Text);
    }
  }

  void PaintLog (LOG_VIEW *Log, const PaintContext &Area, int X, int Y, int W, int H) {
    Gui.FillRect (Area, X, Y, W, H, colours::Window);
    Bevel (Area, X, Y, W, H, false);
    PaintContext C = Intersect (Area, Clip (X + 2, Y + 2, W - 4, H - 4));
    std::vector<std::string> Lines = Cd.LogLines (Log);
    int RowH = Lh + 2, Ry = Y + 2;
    for (size_t I = Log->TopLine; I < Lines.size () && Ry < Y + H; I++, Ry += RowH) {
      bool Sel = I == Log->SelectedLine;
      if (Sel) Gui.FillRect (C, X + 2, Ry, W - 4, RowH, colours::Selection);
      TextIn (C, X + 4, Ry + 1, W - 8, Lines[I], Sel ? colours::SelectionText : colours::Text);
    }
  }

  // ------------------------------------------------- tooltips, message boxes

  void PaintTooltip (const TooltipInfo &Tip) {
    int W = std::min (GuiDriver::TextWidth (Tip.Text) + 8, Gui.Width ()), H = Lh + 4;
    // Kept on the screen: moved left or above the pointer at the edges.
    int X = std::max (0, std::min (Tip.X, Gui.Width () - W));
    int Y = Tip.Y + H > Gui.Height () ? Tip.Y - H - 24 : Tip.Y;
    PaintContext C = Clip (X, Y, W, H);
    Gui.FillRect (C, X, Y, W, H, kTooltipColour);
    Gui.FrameRect (C, X, Y, W, H, colours::Text);
    TextIn (C, X + 4, Y + 2, W - 8, Tip.Text, colours::Text);
  }

  void PaintMessageBox (const MessageBoxRecord &Box) {
    MessageBoxLayout L = LayoutOfMessageBox (Env, Box.Text, Box.Caption);
    PaintContext C = Clip (L.X, L.Y, L.Width, L.Height);
    Gui.FillRect (C, L.X, L.Y, L.Width, L.Height, colours::Face);
    Bevel (C, L.X, L.Y, L.Width, L.Height, true);
    Gui.FillRect (C, L.X + 2, L.Y + 2, L.Width - 4, L.CaptionHeight - 3, colours::ActiveCaption);
    TextIn (C, L.X + 6, L.Y + (L.CaptionHeight - Lh) / 2, L.Width - 12, Box.Caption, colours::CaptionText);
    for (size_t I = 0; I < L.Lines.size (); I++)
      Text (C, L.TextX, L.TextY + int (I) * Lh, L.Lines[I], colours::Text);
    Gui.FillRect (C, L.ButtonX, L.ButtonY, L.ButtonWidth, L.ButtonHeight, colours::Face);
    Bevel (C, L.ButtonX, L.ButtonY, L.ButtonWidth, L.ButtonHeight, true);
    // The default button's dark outline.
    Gui.FrameRect (C, L.ButtonX - 1, L.ButtonY - 1, L.ButtonWidth + 2, L.ButtonHeight + 2, colours::DarkShadow);
    std::string Ok = kOkText;
    Text (C, L.ButtonX + (L.ButtonWidth - GuiDriver::TextWidth (Ok)) / 2, L.ButtonY + (L.ButtonHeight - Lh) / 2, Ok,
          colours::Text);
    Gui.FrameRect (C, L.X, L.Y, L.Width, L.Height, colours::DarkShadow);
  }

  // ----------------------------------------------------------------- popups

  void PaintPopup (WINDOW_HEADER *P) {
    int X = P->X, Y = P->Y, W = P->Width, H = P->Height;
    PaintContext C = Clip (X, Y, W, H);
    Gui.FillRect (C, X, Y, W, H, colours::Face);
    Bevel (C, X, Y, W, H, true);
    int Highlight = -1;
    if (WindowInfo *Info = Wb.Internal ().FindWindow (P)) Highlight = Info->Highlight;
    std::vector<PopupItemInfo> Items = Wb.PopupItems (P);
    for (size_t I = 0; I < Items.size (); I++) {
      const PopupItemInfo &It = Items[I];
      if (!It.Item) continue;
      const CONTROL &R = It.Item->Control;
      int Ix = X + R.X, Iy = Y + R.Y;
      if (It.Separator) {
        Gui.FillRect (C, Ix + 2, Iy + R.Height / 2 - 1, R.Width - 4, 1, colours::Shadow);
        Gui.FillRect (C, Ix + 2, Iy + R.Height / 2, R.Width - 4, 1, colours::Light);
        continue;
      }
      bool Hi = int (I) == Highlight && It.Enabled;
      if (Hi) Gui.FillRect (C, Ix, Iy, R.Width, R.Height, colours::Selection);
      if (It.Icon < ICON_NONE) Icon (C, Ix + 4, Iy + (R.Height - kIconSize) / 2, It.Icon, kIconSize, !It.Enabled);
      int Tx = Ix + 28, Ty = Iy + (R.Height - Lh) / 2, Room = R.Width - 28 - 4;
      if (!It.Enabled) {
        TextIn (C, Tx + 1, Ty + 1, Room, It.Text, colours::Light);
        TextIn (C, Tx, Ty, Room, It.Text, colours::GreyText);
      } else {
        TextIn (C, Tx, Ty, Room, It.Text, Hi ? colours::SelectionText : colours::Text);
      }
    }
  }
};

}  // namespace

WindowLayout LayoutOf (Siblings &Env, WINDOW_HEADER *Window) {
  WindowLayout L;
  int32_t X = 0, Y = 0;
  Env.windows ().ScreenOrigin (Window, X, Y);
  L.X = X, L.Y = Y, L.Width = Window->Width, L.Height = Window->Height;
  L.CaptionHeight = Env.windows ().Table ()->CaptionHeight;
  L.CloseWidth = 16, L.CloseHeight = 14;
  L.CloseX = L.X + L.Width - L.CloseWidth - 5;
  L.CloseY = L.Y + (L.CaptionHeight - L.CloseHeight) / 2 + 1;
  if (Env.windows ().StatusFieldCount (Window) > 0) {
    // The line height + 8 pixels at the bottom of the window, where the
    // driver leaves room for it.
    L.StatusHeight = Env.gui ().Table ()->GetLineHeight () + kStatusPadding;
    L.StatusY = L.Y + L.Height - L.StatusHeight;
  }
  return L;
}

MessageBoxLayout LayoutOfMessageBox (Siblings &Env, const std::string &Text, const std::string &Caption) {
  constexpr int kMargin = 16, kMinWidth = 200, kButtonWidth = 80;
  MessageBoxLayout L;
  const int Lh = Env.gui ().Table ()->GetLineHeight ();
  const int ScreenW = Env.gui ().Width (), ScreenH = Env.gui ().Height ();
  L.CaptionHeight = Env.windows ().Table ()->CaptionHeight;
  // As wide as the longest line, within three quarters of the screen.
  int MaxText = std::max (ScreenW * 3 / 4 - 2 * kMargin, 8 * 8);
  L.Lines = WrapText (Text, MaxText);
  int TextW = 0;
  for (const std::string &Line : L.Lines) TextW = std::max (TextW, GuiDriver::TextWidth (Line));
  int CaptionW = GuiDriver::TextWidth (Caption) + 24;
  L.Width = std::min (std::max ({TextW + 2 * kMargin, CaptionW, kMinWidth}), std::max (ScreenW, 1));
  L.ButtonHeight = Lh + 10, L.ButtonWidth = kButtonWidth;
  // Lines that do not fit the screen are left out.
  int Fixed = L.CaptionHeight + kMargin + kMargin + L.ButtonHeight + 12;
  size_t MaxLines = static_cast<size_t> (std::max (1, (ScreenH - Fixed) / std::max (Lh, 1)));
  if (L.Lines.size () > MaxLines) L.Lines.resize (MaxLines);
  L.Height = Fixed + static_cast<int> (L.Lines.size ()) * Lh;
  L.X = std::max (0, (ScreenW - L.Width) / 2), L.Y = std::max (0, (ScreenH - L.Height) / 2);
  L.TextX = L.X + kMargin, L.TextY = L.Y + L.CaptionHeight + kMargin;
  L.ButtonX = L.X + (L.Width - L.ButtonWidth) / 2;
  L.ButtonY = L.Y + L.Height - 12 - L.ButtonHeight;
  return L;
}

size_t RenderDesktop (Siblings &Env) { return Painter (Env).Run (); }

}  // namespace env
