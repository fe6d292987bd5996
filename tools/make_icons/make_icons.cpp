// Draws the icon files of the file manager and writes the bundled sample
// volume.
//
//   make_icons OUT            OUT/files/<type>.ico and OUT/<toolbar>.ico
//   make_icons --sample DIR   a small folder tree to browse (text, binary,
//                             BMP, JPEG and ICO files, nested and empty folders)
//
// Every icon is a vector pictogram in a 16x16 design grid, rendered at 16 and
// 32 pixels with 4x4 supersampling, and stored as a 32-bit ICO image
// (BITMAPINFOHEADER with doubled height, BGRA rows bottom-up, AND mask).
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include <jpeglib.h>   // after <cstdio>: it needs size_t and FILE

namespace {

namespace fs = std::filesystem;

// ---------------------------------------------------------------- drawing

struct Colour {
  float R, G, B, A;
};

constexpr Colour Rgb (uint32_t Hex, float Alpha = 1.0f) {
  return {((Hex >> 16) & 0xFF) / 255.0f, ((Hex >> 8) & 0xFF) / 255.0f, (Hex & 0xFF) / 255.0f, Alpha};
}

// A shape is an inside test in design units (0..16 across the icon).
using Shape = std::function<bool (float, float)>;

struct Point {
  float X, Y;
};

Shape Rect (float X0, float Y0, float X1, float Y1) {
  return [=] (float X, float Y) { return X >= X0 && X < X1 && Y >= Y0 && Y < Y1; };
}

Shape RoundRect (float X0, float Y0, float X1, float Y1, float Radius) {
  return [=] (float X, float Y) {
    if (X < X0 || X >= X1 || Y < Y0 || Y >= Y1) return false;
    float Cx = std::clamp (X, X0 + Radius, X1 - Radius), Cy = std::clamp (Y, Y0 + Radius, Y1 - Radius);
    return (X - Cx) * (X - Cx) + (Y - Cy) * (Y - Cy) <= Radius * Radius;
  };
}

Shape Ellipse (float Cx, float Cy, float Rx, float Ry) {
  return [=] (float X, float Y) {
    float Dx = (X - Cx) / Rx, Dy = (Y - Cy) / Ry;
    return Dx * Dx + Dy * Dy <= 1.0f;
  };
}

Shape Ring (float Cx, float Cy, float Outer, float Inner) {
  return [=] (float X, float Y) {
    float D = (X - Cx) * (X - Cx) + (Y - Cy) * (Y - Cy);
    return D <= Outer * Outer && D >= Inner * Inner;
  };
}

// A thick segment with round ends.
Shape Line (float X0, float Y0, float X1, float Y1, float Width) {
  return [=] (float X, float Y) {
    float Dx = X1 - X0, Dy = Y1 - Y0, Length2 = Dx * Dx + Dy * Dy;
    float T = Length2 > 0 ? std::clamp (((X - X0) * Dx + (Y - Y0) * Dy) / Length2, 0.0f, 1.0f) : 0.0f;
    float Px = X0 + T * Dx - X, Py = Y0 + T * Dy - Y;
    return Px * Px + Py * Py <= Width * Width / 4;
  };
}

Shape Polygon (std::vector<Point> Points) {
  return [Points = std::move (Points)] (float X, float Y) {
    bool Inside = false;
    for (size_t I = 0, J = Points.size () - 1; I < Points.size (); J = I++) {
      const Point &A = Points[I], &B = Points[J];
      if ((A.Y > Y) != (B.Y > Y) && X < (B.X - A.X) * (Y - A.Y) / (B.Y - A.Y) + A.X) Inside = !Inside;
    }
    return Inside;
  };
}

Shape Minus (Shape A, Shape B) {
  return [=] (float X, float Y) { return A (X, Y) && !B (X, Y); };
}

class Canvas {
 public:
  explicit Canvas (int Size) : Size_ (Size), Pixels_ (static_cast<size_t> (Size) * Size, Colour {0, 0, 0, 0}) {}
  int Size () const { return Size_; }
  const Colour &At (int X, int Y) const { return Pixels_[static_cast<size_t> (Y) * Size_ + X]; }

  // Paints a shape given in design units with coverage-based edges.
  void Fill (const Shape &Inside, Colour C) {
    const int Samples = 4;
    float Scale = 16.0f / Size_;
    for (int Y = 0; Y < Size_; Y++)
      for (int X = 0; X < Size_; X++) {
        int Hits = 0;
        for (int Sy = 0; Sy < Samples; Sy++)
          for (int Sx = 0; Sx < Samples; Sx++)
            if (Inside ((X + (Sx + 0.5f) / Samples) * Scale, (Y + (Sy + 0.5f) / Samples) * Scale)) Hits++;
        if (Hits) Blend (X, Y, C, C.A * Hits / (Samples * Samples));
      }
  }

  // A shape with a darker outline of the given width (design units).
  void Outlined (const Shape &Inside, Colour Body, Colour Edge, float Width = 1.0f) {
    Fill (Inside, Edge);
    Fill (Shrunk (Inside, Width), Body);
  }

  void Blend (int X, int Y, Colour C, float Alpha) {
    Colour &P = Pixels_[static_cast<size_t> (Y) * Size_ + X];
    float Out = Alpha + P.A * (1 - Alpha);
    if (Out <= 0) return;
    P.R = (C.R * Alpha + P.R * P.A * (1 - Alpha)) / Out;
    P.G = (C.G * Alpha + P.G * P.A * (1 - Alpha)) / Out;
    P.B = (C.B * Alpha + P.B * P.A * (1 - Alpha)) / Out;
    P.A = Out;
  }

  // Inside when every point within Width (8 directions) is inside.
  static Shape Shrunk (const Shape &Inside, float Width) {
    return [=] (float X, float Y) {
      static const float D = 0.7071f;
      const float Dirs[8][2] = {{1, 0}, {-1, 0}, {0, 1}, {0, -1}, {D, D}, {-D, D}, {D, -D}, {-D, -D}};
      if (!Inside (X, Y)) return false;
      for (auto &Dir : Dirs)
        if (!Inside (X + Dir[0] * Width, Y + Dir[1] * Width)) return false;
      return true;
    };
  }

 private:
  int Size_;
  std::vector<Colour> Pixels_;
};

// ------------------------------------------------------------- pictograms

const Colour kInk = Rgb (0x303840), kPaper = Rgb (0xFFFFFF), kPaperEdge = Rgb (0x7A8290), kFold = Rgb (0xD8DDE4);

// A sheet of paper with a folded corner, the base of most file icons.
void Page (Canvas &C) {
  // Whole design units keep the 16-pixel image crisp.
  Shape Sheet = Polygon ({{2, 0}, {10, 0}, {14, 4}, {14, 16}, {2, 16}});
  C.Outlined (Sheet, kPaper, kPaperEdge, 1.0f);
  C.Fill (Polygon ({{10, 0}, {14, 4}, {14, 5}, {9, 5}, {9, 0}}), kPaperEdge);
  C.Fill (Polygon ({{10, 1.4f}, {12.6f, 4}, {10, 4}}), kFold);
}

void TextLines (Canvas &C, Colour Ink, int Count, float Top = 6) {
  for (int I = 0; I < Count; I++) {
    float Right = (I % 3 == 2) ? 9.0f : 12.0f;
    C.Fill (Rect (4, Top + I * 2.0f, Right, Top + I * 2.0f + 1.0f), Ink);
  }
}

void Gear (Canvas &C, float Cx, float Cy, float R, Colour Body) {
  for (int I = 0; I < 8; I++) {
    float A = I * 3.14159265f / 4;
    C.Fill (Line (Cx, Cy, Cx + std::cos (A) * R * 1.25f, Cy + std::sin (A) * R * 1.25f, R * 0.55f), Body);
  }
  C.Fill (Ring (Cx, Cy, R, R * 0.45f), Body);
}

void Folder (Canvas &C) {
  Colour Back = Rgb (0xE0A526), Front = Rgb (0xFFCC4D), Edge = Rgb (0xA87412);
  C.Outlined (RoundRect (0.5f, 2, 7.5f, 6, 1), Back, Edge, 0.8f);
  C.Outlined (RoundRect (0.5f, 3.5f, 15.5f, 14.5f, 1), Back, Edge, 0.8f);
  C.Outlined (Polygon ({{2.5f, 6}, {15.5f, 6}, {14, 14.5f}, {0.5f, 14.5f}}), Front, Edge, 0.8f);
}

void Picture (Canvas &C, float X0, float Y0, float X1, float Y1) {
  C.Outlined (Rect (X0, Y0, X1, Y1), Rgb (0x8FD3FF), Rgb (0x4A5A6A), 0.8f);
  float W = X1 - X0, H = Y1 - Y0;
  C.Fill (Ellipse (X0 + W * 0.72f, Y0 + H * 0.3f, W * 0.13f, W * 0.13f), Rgb (0xFFD23A));
  C.Fill (Polygon ({{X0 + 0.8f, Y1 - 0.8f}, {X0 + W * 0.38f, Y0 + H * 0.38f}, {X0 + W * 0.62f, Y1 - 0.8f}}),
          Rgb (0x3C9A3C));
  C.Fill (Polygon ({{X0 + W * 0.4f, Y1 - 0.8f}, {X0 + W * 0.68f, Y0 + H * 0.55f}, {X1 - 0.8f, Y1 - 0.8f}}),
          Rgb (0x2E7D32));
}

// "?" from an arc, a stem and a dot, centred at (Cx, Cy) with height H.
void QuestionMark (Canvas &C, float Cx, float Cy, float H, Colour Ink) {
  float R = H * 0.22f, Top = Cy - H * 0.5f + R, W = H * 0.16f;
  Shape Arc = [=] (float X, float Y) {
    float Dx = X - Cx, Dy = Y - Top, D = std::sqrt (Dx * Dx + Dy * Dy);
    if (std::fabs (D - R) > W / 2) return false;
    return !(Dx < 0 && Dy > 0);   // open at the lower left
  };
  C.Fill (Arc, Ink);
  C.Fill (Line (Cx + R * 0.1f, Top + R, Cx, Top + R * 1.8f, W), Ink);
  C.Fill (Ellipse (Cx, Cy + H * 0.42f, W * 0.7f, W * 0.7f), Ink);
}

using Painter = void (*) (Canvas &);

struct IconDef {
  const char *Name;
  Painter Paint;
};

void PaintExe (Canvas &C) {
  C.Outlined (RoundRect (1, 2, 15, 14, 1), Rgb (0xF4F6F8), Rgb (0x2F4F7F), 0.9f);
  C.Fill (Rect (1.5f, 2.5f, 14.5f, 5.5f), Rgb (0x3A78C8));
  C.Fill (Rect (11.5f, 3.3f, 13.5f, 4.7f), Rgb (0xE25A4A));
  C.Fill (Rect (3, 7, 8, 8), Rgb (0x7A8290));
  C.Fill (Rect (3, 9.5f, 12, 10.5f), Rgb (0x7A8290));
}

void PaintDll (Canvas &C) {
  Page (C);
  Gear (C, 8.2f, 9.8f, 3.0f, Rgb (0x6A5ACD));
}

void PaintRar (Canvas &C) {
  Colour Box = Rgb (0xB07A3C), Edge = Rgb (0x6E4A20);
  C.Outlined (RoundRect (1.5f, 2, 14.5f, 15, 1), Box, Edge, 0.9f);
  C.Fill (Rect (1.5f, 6, 14.5f, 7.5f), Rgb (0x8E2F9E));
  C.Fill (Rect (1.5f, 10, 14.5f, 11.5f), Rgb (0x2F7E9E));
  for (float Y = 2.5f; Y < 14; Y += 2) C.Fill (Rect (7, Y, 9, Y + 1), Rgb (0xE8E0D0));
  C.Outlined (Rect (6.5f, 12, 9.5f, 15), Rgb (0xE8E0D0), Edge, 0.6f);
}

void PaintDoc (Canvas &C) {
  Page (C);
  C.Fill (Rect (4, 2, 9, 4), Rgb (0x2B5CB8));
  TextLines (C, Rgb (0x2B5CB8), 5, 6);
}

void PaintFont (Canvas &C) {
  Page (C);
  Colour Ink = Rgb (0xB03030);
  C.Fill (Line (8.2f, 4.5f, 4.8f, 13.5f, 1.6f), Ink);
  C.Fill (Line (8.2f, 4.5f, 11.6f, 13.5f, 1.6f), Ink);
  C.Fill (Line (6.2f, 10.4f, 10.2f, 10.4f, 1.3f), Ink);
}

void PaintIni (Canvas &C) {
  Page (C);
  for (int I = 0; I < 5; I++) {
    float Y = 6 + I * 2.0f;
    C.Fill (Rect (4, Y, 7, Y + 1), kInk);
    C.Fill (Rect (8, Y, 12, Y + 1), Rgb (0x2E8B57));
  }
}

void PaintWeb (Canvas &C) {
  Colour Sea = Rgb (0x3C8FE0), Land = Rgb (0x4CAF50), Edge = Rgb (0x1E5A9A);
  C.Outlined (Ellipse (8, 8, 7, 7), Sea, Edge, 0.8f);
  C.Fill (Polygon ({{4, 4}, {8, 3}, {9, 6}, {6.5f, 8.5f}, {4, 8}}), Land);
  C.Fill (Polygon ({{9, 9}, {12.5f, 8.5f}, {12, 12.5f}, {9.5f, 13}}), Land);
  C.Fill (Ring (8, 8, 7.1f, 6.5f), Edge);
  Shape Meridian = [] (float X, float Y) {
    float Dx = (X - 8) / 3.2f, Dy = (Y - 8) / 7;
    float D = Dx * Dx + Dy * Dy;
    return D <= 1.0f && D >= 0.78f;
  };
  C.Fill (Meridian, Rgb (0xFFFFFF, 0.6f));
  C.Fill (Rect (1, 7.7f, 15, 8.3f), Rgb (0xFFFFFF, 0.6f));
}

void PaintAudio (Canvas &C) {
  Colour Ink = Rgb (0x7B3FB8);
  C.Fill (Ellipse (5, 12.5f, 2.6f, 2), Ink);
  C.Fill (Ellipse (12, 11, 2.6f, 2), Ink);
  C.Fill (Rect (6.6f, 3.5f, 7.6f, 12.5f), Ink);
  C.Fill (Rect (13.6f, 2, 14.6f, 11), Ink);
  C.Fill (Polygon ({{6.6f, 3.5f}, {14.6f, 1.5f}, {14.6f, 4.5f}, {6.6f, 6.5f}}), Ink);
}

void PaintVideo (Canvas &C) {
  Colour Film = Rgb (0x2A2E36);
  C.Fill (RoundRect (0.5f, 2.5f, 15.5f, 13.5f, 1), Film);
  for (float X = 1.5f; X < 15; X += 2.5f) {
    C.Fill (Rect (X, 3.3f, X + 1.2f, 4.5f), kPaper);
    C.Fill (Rect (X, 11.5f, X + 1.2f, 12.7f), kPaper);
  }
  C.Fill (Rect (2, 5.3f, 14, 10.7f), Rgb (0x5FA8E8));
  C.Fill (Polygon ({{6.5f, 6}, {10.5f, 8}, {6.5f, 10}}), kPaper);
}

void PaintPicture (Canvas &C) { Picture (C, 0.8f, 2, 15.2f, 14); }

void PaintHex (Canvas &C) {
  Page (C);
  Colour A = Rgb (0x1E7A4A), B = Rgb (0x7FB89A);
  for (int Row = 0; Row < 3; Row++)
    for (int Col = 0; Col < 3; Col++)
      C.Fill (Rect (4.0f + Col * 3, 6.0f + Row * 3, 6.0f + Col * 3, 8.0f + Row * 3), (Row + Col) % 2 ? B : A);
}

void PaintUnknown (Canvas &C) {
  Page (C);
  QuestionMark (C, 8.2f, 9.5f, 8, Rgb (0x7A8290));
}

void PaintText (Canvas &C) {
  Page (C);
  TextLines (C, Rgb (0x7A8290), 5, 5);
}

void PaintHelp (Canvas &C) {
  C.Outlined (Ellipse (8, 8, 7.2f, 7.2f), Rgb (0x2F80ED), Rgb (0x1B4F9A), 0.8f);
  QuestionMark (C, 8, 8.2f, 10, kPaper);
}

void PaintIconFile (Canvas &C) {
  C.Outlined (RoundRect (1, 1, 15, 15, 1.5f), Rgb (0xF4F6F8), Rgb (0x5A6270), 0.8f);
  C.Fill (RoundRect (2.5f, 2.5f, 7.5f, 7.5f, 1), Rgb (0xE25A4A));
  C.Fill (RoundRect (8.5f, 2.5f, 13.5f, 7.5f, 1), Rgb (0x3FA34D));
  C.Fill (RoundRect (2.5f, 8.5f, 7.5f, 13.5f, 1), Rgb (0x2F80ED));
  C.Fill (RoundRect (8.5f, 8.5f, 13.5f, 13.5f, 1), Rgb (0xF2B71E));
}

void PaintGoBack (Canvas &C) {
  Colour Body = Rgb (0x3FA34D), Edge = Rgb (0x1F6A2A);
  // An arrow pointing up, towards the parent folder.
  C.Outlined (Polygon ({{8, 1}, {15, 8}, {11, 8}, {11, 15}, {5, 15}, {5, 8}, {1, 8}}), Body, Edge, 0.9f);
}

void PaintCopy (Canvas &C) {
  Shape Back = Rect (1, 1, 10, 12), Front = Rect (6, 4.5f, 15, 15.5f);
  C.Outlined (Back, kPaper, kPaperEdge, 0.9f);
  for (int I = 0; I < 3; I++) C.Fill (Rect (2.5f, 3 + I * 2.0f, 8.5f, 4 + I * 2.0f), Rgb (0xB0B6C0));
  C.Outlined (Front, kPaper, Rgb (0x2F4F7F), 0.9f);
  for (int I = 0; I < 4; I++) C.Fill (Rect (7.5f, 7 + I * 2.0f, 13.5f, 8 + I * 2.0f), Rgb (0x3A78C8));
}

void PaintPaste (Canvas &C) {
  C.Outlined (RoundRect (1.5f, 2, 13, 15.5f, 1), Rgb (0xC48A4A), Rgb (0x7A5026), 0.9f);
  C.Outlined (RoundRect (4.5f, 0.5f, 10, 4, 0.8f), Rgb (0xB8BEC8), Rgb (0x5A6270), 0.7f);
  C.Outlined (Rect (6.5f, 6, 15, 15.5f), kPaper, kPaperEdge, 0.8f);
  for (int I = 0; I < 3; I++) C.Fill (Rect (8, 8.5f + I * 2.0f, 13.5f, 9.5f + I * 2.0f), Rgb (0x8A929E));
}

void PaintDelete (Canvas &C) {
  Colour Ink = Rgb (0xD93025);
  C.Fill (Line (3, 3, 13, 13, 3.0f), Rgb (0x8A1C14));
  C.Fill (Line (13, 3, 3, 13, 3.0f), Rgb (0x8A1C14));
  C.Fill (Line (3, 3, 13, 13, 2.0f), Ink);
  C.Fill (Line (13, 3, 3, 13, 2.0f), Ink);
}

const IconDef kFileIcons[] = {
    {"fileexe", PaintExe},   {"filedll", PaintDll},       {"filerar", PaintRar},     {"filedoc", PaintDoc},
    {"filefont", PaintFont}, {"fileini", PaintIni},       {"fileie", PaintWeb},      {"filemp3", PaintAudio},
    {"fileavi", PaintVideo}, {"dir", Folder},             {"filebmp", PaintPicture}, {"filehex", PaintHex},
    {"fileunkn", PaintUnknown}, {"filetxt", PaintText},   {"help", PaintHelp},       {"icon", PaintIconFile},
};

const IconDef kToolbarIcons[] = {
    {"goback", PaintGoBack}, {"copyfile", PaintCopy}, {"paste", PaintPaste}, {"delete", PaintDelete}};

// ------------------------------------------------------------- file formats

void Put16 (std::vector<uint8_t> &Out, uint32_t V) {
  Out.push_back (V & 0xFF);
  Out.push_back ((V >> 8) & 0xFF);
}

void Put32 (std::vector<uint8_t> &Out, uint32_t V) {
  Put16 (Out, V & 0xFFFF);
  Put16 (Out, V >> 16);
}

uint8_t Byte (float V) { return static_cast<uint8_t> (std::lround (std::clamp (V, 0.0f, 1.0f) * 255)); }

// One ICO image: BITMAPINFOHEADER (height doubled), BGRA rows bottom-up, then
// the 1-bit AND mask (set where the pixel is transparent), rows padded to 32 bits.
std::vector<uint8_t> IcoImage (const Canvas &C) {
  int N = C.Size ();
  int MaskStride = ((N + 31) / 32) * 4;
  std::vector<uint8_t> Out;
  Put32 (Out, 40);
  Put32 (Out, N);
  Put32 (Out, N * 2);
  Put16 (Out, 1);
  Put16 (Out, 32);
  Put32 (Out, 0);
  Put32 (Out, N * N * 4 + MaskStride * N);
  for (int I = 0; I < 4; I++) Put32 (Out, 0);
  for (int Y = N - 1; Y >= 0; Y--)
    for (int X = 0; X < N; X++) {
      const Colour &P = C.At (X, Y);
      Out.push_back (Byte (P.B));
      Out.push_back (Byte (P.G));
      Out.push_back (Byte (P.R));
      Out.push_back (Byte (P.A));
    }
  for (int Y = N - 1; Y >= 0; Y--) {
    std::vector<uint8_t> Row (MaskStride, 0);
    for (int X = 0; X < N; X++)
      if (Byte (C.At (X, Y).A) < 128) Row[X / 8] |= static_cast<uint8_t> (0x80 >> (X % 8));
    Out.insert (Out.end (), Row.begin (), Row.end ());
  }
  return Out;
}

std::vector<uint8_t> IcoFile (const std::vector<Canvas> &Images) {
  std::vector<uint8_t> Out;
  Put16 (Out, 0);
  Put16 (Out, 1);
  Put16 (Out, static_cast<uint32_t> (Images.size ()));
  std::vector<std::vector<uint8_t>> Data;
  for (const Canvas &C : Images) Data.push_back (IcoImage (C));
  uint32_t Offset = 6 + 16 * static_cast<uint32_t> (Images.size ());
  for (size_t I = 0; I < Images.size (); I++) {
    int N = Images[I].Size ();
    Out.push_back (N >= 256 ? 0 : static_cast<uint8_t> (N));
    Out.push_back (N >= 256 ? 0 : static_cast<uint8_t> (N));
    Out.push_back (0);
    Out.push_back (0);
    Put16 (Out, 1);
    Put16 (Out, 32);
    Put32 (Out, static_cast<uint32_t> (Data[I].size ()));
    Put32 (Out, Offset);
    Offset += static_cast<uint32_t> (Data[I].size ());
  }
  for (auto &D : Data) Out.insert (Out.end (), D.begin (), D.end ());
  return Out;
}

bool WriteBytes (const fs::path &Path, const std::vector<uint8_t> &Bytes) {
  std::FILE *F = std::fopen (Path.c_str (), "wb");
  if (F == nullptr) return false;
  bool Ok = std::fwrite (Bytes.data (), 1, Bytes.size (), F) == Bytes.size ();
  return std::fclose (F) == 0 && Ok;
}

bool WriteText (const fs::path &Path, const std::string &Text) {
  return WriteBytes (Path, std::vector<uint8_t> (Text.begin (), Text.end ()));
}

bool WriteIcon (const fs::path &Path, Painter Paint, std::vector<int> Sizes) {
  std::vector<Canvas> Images;
  for (int Size : Sizes) {
    Images.emplace_back (Size);
    Paint (Images.back ());
  }
  return WriteBytes (Path, IcoFile (Images));
}

// Pixels 0xAARRGGBB, rows top-down.
struct Image {
  int Width, Height;
  std::vector<uint32_t> Pixels;
};

std::vector<uint8_t> BmpFile (const Image &Img, int Bits) {
  int Stride = ((Img.Width * (Bits / 8)) + 3) & ~3;
  uint32_t DataSize = static_cast<uint32_t> (Stride * Img.Height);
  std::vector<uint8_t> Out;
  Out.push_back ('B');
  Out.push_back ('M');
  Put32 (Out, 54 + DataSize);
  Put32 (Out, 0);
  Put32 (Out, 54);
  Put32 (Out, 40);
  Put32 (Out, Img.Width);
  Put32 (Out, Img.Height);
  Put16 (Out, 1);
  Put16 (Out, Bits);
  Put32 (Out, 0);
  Put32 (Out, DataSize);
  Put32 (Out, 2835);
  Put32 (Out, 2835);
  Put32 (Out, 0);
  Put32 (Out, 0);
  for (int Y = Img.Height - 1; Y >= 0; Y--) {
    size_t Start = Out.size ();
    for (int X = 0; X < Img.Width; X++) {
      uint32_t P = Img.Pixels[static_cast<size_t> (Y) * Img.Width + X];
      Out.push_back (P & 0xFF);
      Out.push_back ((P >> 8) & 0xFF);
      Out.push_back ((P >> 16) & 0xFF);
      if (Bits == 32) Out.push_back (P >> 24);
    }
    while (Out.size () - Start < static_cast<size_t> (Stride)) Out.push_back (0);
  }
  return Out;
}

bool WriteJpeg (const fs::path &Path, const Image &Img, int Quality) {
  std::FILE *F = std::fopen (Path.c_str (), "wb");
  if (F == nullptr) return false;
  jpeg_compress_struct Info;
  jpeg_error_mgr Errors;
  Info.err = jpeg_std_error (&Errors);
  jpeg_create_compress (&Info);
  jpeg_stdio_dest (&Info, F);
  Info.image_width = static_cast<JDIMENSION> (Img.Width);
  Info.image_height = static_cast<JDIMENSION> (Img.Height);
  Info.input_components = 3;
  Info.in_color_space = JCS_RGB;
  jpeg_set_defaults (&Info);
  jpeg_set_quality (&Info, Quality, TRUE);
  jpeg_start_compress (&Info, TRUE);
  std::vector<uint8_t> Row (static_cast<size_t> (Img.Width) * 3);
  while (Info.next_scanline < Info.image_height) {
    const uint32_t *Src = &Img.Pixels[static_cast<size_t> (Info.next_scanline) * Img.Width];
    for (int X = 0; X < Img.Width; X++) {
      Row[X * 3] = (Src[X] >> 16) & 0xFF;
      Row[X * 3 + 1] = (Src[X] >> 8) & 0xFF;
      Row[X * 3 + 2] = Src[X] & 0xFF;
    }
    JSAMPROW Rows[1] = {Row.data ()};
    jpeg_write_scanlines (&Info, Rows, 1);
  }
  jpeg_finish_compress (&Info);
  jpeg_destroy_compress (&Info);
  return std::fclose (F) == 0;
}

// --------------------------------------------------------- sample pictures

uint32_t Pack (float R, float G, float B, float A = 1) {
  return (static_cast<uint32_t> (Byte (A)) << 24) | (static_cast<uint32_t> (Byte (R)) << 16) |
         (static_cast<uint32_t> (Byte (G)) << 8) | Byte (B);
}

// A hue ramp from left to right, darkening towards the bottom.
Image Gradient (int W, int H) {
  Image Img {W, H, std::vector<uint32_t> (static_cast<size_t> (W) * H)};
  for (int Y = 0; Y < H; Y++)
    for (int X = 0; X < W; X++) {
      float Hue = 6.0f * X / W, Light = 1.0f - 0.7f * Y / H;
      float R = std::clamp (std::fabs (Hue - 3) - 1, 0.0f, 1.0f);
      float G = std::clamp (2 - std::fabs (Hue - 2), 0.0f, 1.0f);
      float B = std::clamp (2 - std::fabs (Hue - 4), 0.0f, 1.0f);
      Img.Pixels[static_cast<size_t> (Y) * W + X] = Pack (R * Light, G * Light, B * Light);
    }
  return Img;
}

// Evening landscape: sky, sun, two hill ranges, water with reflections.
// With Vignette the corners fade to transparent (for the 32-bit BMP).
Image Landscape (int W, int H, bool Vignette) {
  Image Img {W, H, std::vector<uint32_t> (static_cast<size_t> (W) * H)};
  for (int Y = 0; Y < H; Y++)
    for (int X = 0; X < W; X++) {
      float U = static_cast<float> (X) / W, V = static_cast<float> (Y) / H;
      float R = 0.95f - 0.5f * V, G = 0.55f + 0.2f * V, B = 0.35f + 0.6f * V;   // sky
      float Sun = std::hypot (U - 0.7f, (V - 0.42f) * H / W);
      if (Sun < 0.08f) R = 1, G = 0.9f, B = 0.5f;
      else if (Sun < 0.16f) R += (0.16f - Sun) * 2, G += (0.16f - Sun);
      float Far = 0.55f + 0.06f * std::sin (U * 9.0f) + 0.03f * std::sin (U * 23.0f);
      float Near = 0.68f + 0.05f * std::sin (U * 5.0f + 1.3f);
      if (V > Far) R = 0.35f, G = 0.38f, B = 0.55f;
      if (V > Near) R = 0.18f, G = 0.42f + 0.1f * std::sin (U * 40) * 0.2f, B = 0.2f;
      if (V > 0.8f) {   // water
        float Wave = 0.04f * std::sin (U * 60 + V * 90);
        R = 0.2f + Wave, G = 0.35f + Wave, B = 0.6f + Wave;
        if (std::fabs (U - 0.7f) < 0.05f * (1.2f - V)) R += 0.4f, G += 0.3f;
      }
      float A = 1;
      if (Vignette) {
        float D = std::hypot (U - 0.5f, V - 0.5f);
        A = std::clamp ((0.72f - D) * 5.0f, 0.0f, 1.0f);
      }
      Img.Pixels[static_cast<size_t> (Y) * W + X] = Pack (R, G, B, A);
    }
  return Img;
}

std::vector<uint8_t> BinaryBlob (size_t Size) {
  std::vector<uint8_t> Out (Size);
  uint32_t State = 0x2545F491;
  for (size_t I = 0; I < Size; I++) {
    if (I < 256) {
      Out[I] = static_cast<uint8_t> (I);   // every byte value once, then noise
      continue;
    }
    State ^= State << 13;
    State ^= State >> 17;
    State ^= State << 5;
    Out[I] = static_cast<uint8_t> (State);
  }
  return Out;
}

bool WriteSample (const fs::path &Dir) {
  std::error_code Error;
  for (const char *Sub : {"docs/guide", "pictures", "data", "empty", "tools"}) fs::create_directories (Dir / Sub, Error);
  if (Error) return false;
  bool Ok = true;
  Ok &= WriteText (Dir / "readme.txt",
                   "Sample volume\r\n"
                   "=============\r\n"
                   "\r\n"
                   "This folder is mounted as a volume to try the file manager:\r\n"
                   "  docs      text notes, with a nested folder\r\n"
                   "  pictures  BMP (24 and 32 bit), JPEG and ICO files\r\n"
                   "  data      a binary file for the hex viewer\r\n"
                   "  empty     an empty folder\r\n");
  Ok &= WriteText (Dir / "docs" / "notes.txt",
                   "Notes\n- Copy and paste work between folders.\n- Press Delete to remove the selection.\n");
  Ok &= WriteText (Dir / "docs" / "guide" / "chapter1.txt",
                   "Chapter 1\n\nOpen a folder with a double click; the back button goes up one level.\n");
  Ok &= WriteText (Dir / "docs" / "settings.ini", "[view]\ncolumns=4\nsort=name\n");
  Ok &= WriteBytes (Dir / "data" / "blob.bin", BinaryBlob (10000));
  Ok &= WriteBytes (Dir / "tools" / "setup.exe", BinaryBlob (1536));
  Ok &= WriteBytes (Dir / "pictures" / "gradient24.bmp", BmpFile (Gradient (96, 64), 24));
  Ok &= WriteBytes (Dir / "pictures" / "sunset32.bmp", BmpFile (Landscape (120, 80, true), 32));
  Ok &= WriteJpeg (Dir / "pictures" / "lake.jpg", Landscape (160, 120, false), 85);
  Ok &= WriteIcon (Dir / "pictures" / "app.ico", PaintIconFile, {16, 32, 48});
  return Ok;
}

bool WriteIcons (const fs::path &Out) {
  std::error_code Error;
  fs::create_directories (Out / "files", Error);
  if (Error) return false;
  bool Ok = true;
  for (const IconDef &Def : kFileIcons) Ok &= WriteIcon (Out / "files" / (std::string (Def.Name) + ".ico"), Def.Paint, {16, 32});
  for (const IconDef &Def : kToolbarIcons) Ok &= WriteIcon (Out / (std::string (Def.Name) + ".ico"), Def.Paint, {16, 32});
  return Ok;
}

}  // namespace

int main (int Argc, char **Argv) {
  if (Argc == 3 && std::string (Argv[1]) == "--sample") {
    if (WriteSample (Argv[2])) return 0;
    std::fprintf (stderr, "make_icons: cannot write the sample volume to %s\n", Argv[2]);
    return 1;
  }
  if (Argc == 2) {
    if (WriteIcons (Argv[1])) return 0;
    std::fprintf (stderr, "make_icons: cannot write the icons to %s\n", Argv[1]);
    return 1;
  }
  std::fprintf (stderr, "usage: make_icons OUT_DIR | make_icons --sample DIR\n");
  return 2;
}
