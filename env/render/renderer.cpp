#include "env/render/renderer.h"

#include <algorithm>
#include <cstring>
#include <set>

#include "env/controls/control_driver.h"
#include "env/siblings.h"
#include "env/gui/gui_driver.h"
#include "env/windows/window_base.h"
#include "env/windows/window_internal.h"

namespace env {

namespace {

constexpr int kStatusPadding = 8;
constexpr int kScrollBarWidth = 16;
constexpr int kIconSize = 16;
constexpr uint32_t kTooltipColour = 0xFFFFE1;
constexpr const char *kOkText = "OK";

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
    if (Wb.ShownTooltip (Tip)) PaintTooltip (Tip);
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
  // Text cut at the right edge of the clip with its own clip.
  // Only whole characters that fit in W pixels are drawn.
  void TextIn (const PaintContext &C, int X, int Y, int W, const std::string &T, uint32_t Colour) {
    Gui.DrawText (Intersect (C, Clip (X, Y, W, Lh)), X, Y, Fit (T, W), Colour);
  }
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
    PaintContext TitleClip = Intersect (Ctx, Clip (TextX, Y, L.CloseX - 4 - TextX, L.CaptionHeight));
    Text (TitleClip, TextX, Y + (L.CaptionHeight - Lh) / 2, Str (W->Title, sizeof W->Title),
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
    std::vector<int> Widths (Fields, 0);
    if (Fields == 1) Widths[0] = Inner;
    else {
      int Rest = Inner / 3;
      Widths[0] = Inner - Rest;
      for (unsigned F = 1; F < Fields; F++) Widths[F] = Rest / int (Fields - 1);
    }
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
          TextIn (C, X, Y + (H - Lh) / 2, W, T, colours::Text);
        }
        break;
      case CONTROL_KIND_BUTTON: {
        bool Pressed = Ctl->State == 1;
        Gui.FillRect (C, X, Y, W, H, colours::Face);
        Bevel (C, X, Y, W, H, !Pressed);
        int Tw = GuiDriver::TextWidth (T);
        Text (C, X + (W - Tw) / 2 + Pressed, Y + (H - Lh) / 2 + Pressed, T, colours::Text);
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
      case CONTROL_KIND_EDIT:
        Gui.FillRect (C, X, Y, W, H, colours::Window);
        Gui.FrameRect (C, X, Y, W, H, colours::Text);
        TextIn (C, X + 3, Y + (H - Lh) / 2, W - 6, T, colours::Text);
        Gui.FillRect (C, X + 3 + GuiDriver::TextWidth (T), Y + (H - Lh) / 2, 1, Lh, colours::Text);   // caret
        break;
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
    int Tw = GuiDriver::TextWidth (T);
    if (!Enabled) Text (C, X + (W - Tw) / 2 + 1, Y + (H - Lh) / 2 + 1, T, colours::Light);
    Text (C, X + (W - Tw) / 2, Y + (H - Lh) / 2, T, Colour);
  }

  void ScrollBar (const PaintContext &C, int X, int Y, int W, int H, unsigned Total, unsigned Visible, unsigned Top) {
    Gui.FillRect (C, X, Y, W, H, 0xE8E8E8);
    int Arrow = std::min (W, H / 2);
    for (int End = 0; End < 2; End++) {
      int Ay = End == 0 ? Y : Y + H - Arrow;
      Gui.FillRect (C, X, Ay, W, Arrow, colours::Face);
      Bevel (C, X, Ay, W, Arrow, true);
      int Cx = X + W / 2, Cy = Ay + Arrow / 2;
      for (int I = 0; I < 4; I++) {
        int Row = End == 0 ? Cy - 2 + I : Cy + 1 - I;
        Gui.FillRect (C, Cx - I, Row, 2 * I + 1, 1, colours::Text);
      }
    }
    int Track = H - 2 * Arrow;
    if (Track <= 0 || Total == 0 || Visible >= Total) return;
    int Thumb = std::max (8, int (int64_t (Track) * Visible / Total));
    Thumb = std::min (Thumb, Track);
    int Pos = int (int64_t (Track - Thumb) * std::min (Top, Total - Visible) / std::max (1u, Total - Visible));
    Gui.FillRect (C, X, Y + Arrow + Pos, W, Thumb, colours::Face);
    Bevel (C, X, Y + Arrow + Pos, W, Thumb, true);
  }

  static constexpr uint32_t kFixedColumnTint = 0xD2DEF2;

  void PaintList (LIST_CONTROL *L, const PaintContext &Area, int X, int Y, int W, int H) {
    Gui.FillRect (Area, X, Y, W, H, colours::Window);
    Bevel (Area, X, Y, W, H, false);
    int InnerW = W - 2 - (L->ScrollBar ? kScrollBarWidth : 0);
    PaintContext C = Intersect (Area, Clip (X + 1, Y + 1, InnerW, H - 2));
    std::vector<ListColumnInfo> Cols = Cd.Columns (L);
    int HeaderH = Cd.HeaderHeight (), RowH = Cd.RowHeight ();
    // Fixed-pitch lists (the hex view) give every character its column:
    // cells are as wide as their text, so they carry no padding.
    bool Fixed = L->Option == 1;
    int Pad = Fixed ? 0 : 4;
    int Cx = X + 1;
    for (const ListColumnInfo &Col : Cols) {
      Gui.FillRect (C, Cx, Y + 1, Col.Width, HeaderH, colours::Face);
      Bevel (C, Cx, Y + 1, Col.Width, HeaderH, true);
      TextIn (C, Cx + Pad, Y + 1 + (HeaderH - Lh) / 2, Col.Width - 2 * Pad, Col.Title, colours::Text);
      Cx += Col.Width;
    }
    if (Cx < X + 1 + InnerW) {
      Gui.FillRect (C, Cx, Y + 1, X + 1 + InnerW - Cx, HeaderH, colours::Face);
      Bevel (C, Cx, Y + 1, X + 1 + InnerW - Cx, HeaderH, true);
    }
    std::vector<uint16_t> Sel = Cd.SelectedRows (L);
    std::set<uint16_t> Selected (Sel.begin (), Sel.end ());
    uint16_t EditRow = Cd.EditRow (L);
    auto *GetItem = Env.controls ().Table ()->GetItem;
    int Ry = Y + 1 + HeaderH;
    for (unsigned Row = L->TopRow; Row < L->RowCount && Ry < Y + H - 1; Row++, Ry += RowH) {
      bool IsSel = !Fixed && Selected.count (Row);
      if (IsSel) Gui.FillRect (C, X + 1, Ry, InnerW, RowH, colours::Selection);
      uint32_t Colour = IsSel ? colours::SelectionText : colours::Text;
      int Ty = Ry + (RowH - Lh) / 2;
      int ColX = X + 1;
      for (size_t Col = 0; Col < std::max<size_t> (Cols.size (), 1); Col++) {
        int ColW = Cols.empty () ? InnerW : Cols[Col].Width;
        int TextX = ColX + Pad;
        if (Col == 0 && !Fixed) {
          LIST_ITEM *Item = GetItem ? GetItem (L, static_cast<UINT16> (Row)) : nullptr;
          if (Item && Item->Icon < ICON_NONE) Icon (C, ColX + 2, Ry + (RowH - kIconSize) / 2, Item->Icon, kIconSize);
          TextX = ColX + 2 + kIconSize + 4;
        }
        // Without padding, neighbouring cells are told apart by a light tint on every other column.
        if (Fixed && Col % 2 == 1) Gui.FillRect (C, ColX, Ry, ColW, RowH, kFixedColumnTint);
        if (!(Col == 0 && Row == EditRow)) {
          std::string Cell = Cd.CellText (L, static_cast<uint8_t> (Col), static_cast<uint16_t> (Row));
          bool Right = !Cols.empty () && Cols[Col].RightAligned;
          int Tw = GuiDriver::TextWidth (Cell);
          int Tx = Right ? std::max (TextX, ColX + ColW - Pad - Tw) : TextX;
          TextIn (C, Tx, Ty, ColX + ColW - Tx - Pad / 2, Cell, Colour);
        }
        ColX += ColW;
      }
      if (!Fixed && Row == L->CurrentRow && !IsSel) {
        // Focus mark of the current row: a dotted outline.
        for (int Dx = 0; Dx < InnerW; Dx += 2) {
          Gui.SetPixel (C, X + 1 + Dx, Ry, colours::Shadow);
          Gui.SetPixel (C, X + 1 + Dx, Ry + RowH - 1, colours::Shadow);
        }
      }
    }
    if (L->ScrollBar) {
      ScrollBar (Area, X + W - 1 - kScrollBarWidth, Y + 1, kScrollBarWidth, H - 2, L->RowCount, L->VisibleRows, L->TopRow);
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
      int Tw = GuiDriver::TextWidth (Name);
      if (Sel) Gui.FillRect (C, Ix - 2, Ry, Tw + 4, RowH, colours::Selection);
      Text (C, Ix, Ry + 1, Name, Sel ? colours::SelectionText : colours::Text);
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
      Text (C, X + 4, Ry + 1, Lines[I], Sel ? colours::SelectionText : colours::Text);
    }
  }

  // ------------------------------------------------- tooltips, message boxes

  void PaintTooltip (const TooltipInfo &Tip) {
    int W = GuiDriver::TextWidth (Tip.Text) + 8, H = Lh + 4;
    // Kept on the screen: moved left or above the pointer at the edges.
    int X = std::max (0, std::min (Tip.X, Gui.Width () - W));
    int Y = Tip.Y + H > Gui.Height () ? Tip.Y - H - 24 : Tip.Y;
    PaintContext C = Clip (X, Y, W, H);
    Gui.FillRect (C, X, Y, W, H, kTooltipColour);
    Gui.FrameRect (C, X, Y, W, H, colours::Text);
    Text (C, X + 4, Y + 2, Tip.Text, colours::Text);
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
      int Tx = Ix + 28, Ty = Iy + (R.Height - Lh) / 2;
      if (!It.Enabled) {
        Text (C, Tx + 1, Ty + 1, It.Text, colours::Light);
        Text (C, Tx, Ty, It.Text, colours::GreyText);
      } else {
        Text (C, Tx, Ty, It.Text, Hi ? colours::SelectionText : colours::Text);
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
