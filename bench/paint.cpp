// Painting: the whole 1024 x 768 desktop with a file-manager window over a
// folder of 500 files and a second window, and the primitives it is made of.
// "fps" is frames (whole paintings) per second.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <fstream>

#include "core/surveyor_protocol.h"
#include "env/controls/control_driver.h"
#include "env/host/environment.h"
#include "env/gui/gui_driver.h"
#include "env/render/renderer.h"
#include "env/windows/window_base.h"
#include "filemanager/main_window.h"
#include "services/service_ids.h"
#include "support/driver_fixture.h"

namespace {

struct Desktop {
  TempFolder Folder;
  env::Environment Env;
  bool Ok = false;

  Desktop () {
    for (int I = 0; I < 500; I++) {
      char Name[32];
      std::snprintf (Name, sizeof (Name), I % 5 ? "picture%03d.bmp" : "notes%03d.txt", I);
      std::ofstream (Folder.Path () / Name) << I;
    }
    env::VolumeSpec Spec;
    Spec.Folder = Folder.Path ().string ();
    int V = Env.Mount (Spec);
    if (V < 0 || Env.LoadDriver (&SurveyorEntryPoint) != EFI_SUCCESS) return;
    const EFI_GUID Guid = SURVEYOR_PROTOCOL_GUID;
    auto *Surveyor = static_cast<SURVEYOR_PROTOCOL *> (Env.Locate (Guid));
    if (!Surveyor) return;
    Ok = Surveyor->OpenVolumeWindow (1000, 700, static_cast<UINT8> (V), nullptr, nullptr) != nullptr &&
         Surveyor->OpenVolumeWindow (500, 400, static_cast<UINT8> (V), nullptr, nullptr) != nullptr;
  }
  ~Desktop () {
    Env.windows ().DestroyAllWindows ();
    Env.windows ().PumpMessages ();
  }
};

void Fps (benchmark::State &State) {
  State.counters["fps"] = benchmark::Counter (static_cast<double> (State.iterations ()), benchmark::Counter::kIsRate);
}

void BM_RenderDesktop (benchmark::State &State) {
  Desktop D;
  if (!D.Ok) {
    State.SkipWithError ("driver or windows not ready");
    return;
  }
  for (auto _ : State) benchmark::DoNotOptimize (env::RenderDesktop (D.Env));
  Fps (State);
}
BENCHMARK (BM_RenderDesktop)->Unit (benchmark::kMillisecond);

// One main window over the whole 1024 x 768 screen on a folder of 500 files:
// as many rows as the screen shows (the menu header, the list's column
// header and the status line take the rest).
struct FullScreenWindow {
  Desktop D;
  MAIN_WINDOW *Window = nullptr;

  FullScreenWindow () {
    if (!D.Ok) return;
    std::vector<WINDOW_HEADER *> All = D.Env.windows ().TopLevelWindows ();
    for (WINDOW_HEADER *W : All)
      if (W != All.back ()) D.Env.windows ().SendSysCommand (W, SYSCMD_CLOSE);
    D.Env.windows ().PumpMessages ();
    Window = reinterpret_cast<MAIN_WINDOW *> (All.back ());
    Window->Header.X = 0, Window->Header.Y = 0;
    D.Env.windows ().ResizeWindow (&Window->Header, 1024, 768);
    D.Env.windows ().PumpMessages ();
  }
};

void BM_FullScreenMainWindow (benchmark::State &State) {
  FullScreenWindow F;
  if (F.Window == nullptr) {
    State.SkipWithError ("driver or window not ready");
    return;
  }
  for (auto _ : State) benchmark::DoNotOptimize (env::RenderDesktop (F.D.Env));
  Fps (State);
  State.counters["visible_rows"] = F.Window->List->VisibleRows;
}
BENCHMARK (BM_FullScreenMainWindow)->Unit (benchmark::kMillisecond);

// One row's text changes, then the screen is painted again (the renderer
// always paints the whole screen).
void BM_RepaintAfterOneRowChanges (benchmark::State &State) {
  FullScreenWindow F;
  if (F.Window == nullptr) {
    State.SkipWithError ("driver or window not ready");
    return;
  }
  CONTROL_DRIVER_PROTOCOL *Cd = F.D.Env.controls ().Table ();
  const CHAR8 *Names[2] = {reinterpret_cast<const CHAR8 *> ("renamed.txt"),
                           reinterpret_cast<const CHAR8 *> ("renamed-again.txt")};
  unsigned I = 0;
  for (auto _ : State) {
    Cd->SetItemText (F.Window->List, 0, 5, Names[I++ & 1]);
    benchmark::DoNotOptimize (env::RenderDesktop (F.D.Env));
  }
  Fps (State);
}
BENCHMARK (BM_RepaintAfterOneRowChanges)->Unit (benchmark::kMillisecond);

struct Screen {
  env::Firmware Fw;
  env::GuiDriver Gui {1024, 768, 5};
};

void BM_FillScreen (benchmark::State &State) {
  Screen S;
  env::PaintContext C = S.Gui.ScreenContext ();
  uint32_t Colour = 0;
  for (auto _ : State) S.Gui.FillRect (C, 0, 0, 1024, 768, Colour++);
  Fps (State);
}
BENCHMARK (BM_FillScreen)->Unit (benchmark::kMicrosecond);

// 48 lines of 120 characters, half of them GBK double-byte: a screen of text.
void BM_TextScreen (benchmark::State &State) {
  Screen S;
  env::PaintContext C = S.Gui.ScreenContext ();
  std::string Line;
  for (int I = 0; I < 30; I++) Line += "File\xD6\xD0\xCE\xC4";
  for (auto _ : State) {
    for (int Y = 0; Y < 768; Y += 16) S.Gui.DrawText (C, 0, Y, Line, 0);
  }
  Fps (State);
}
BENCHMARK (BM_TextScreen)->Unit (benchmark::kMillisecond);

void BM_ScaleAndBlendPicture (benchmark::State &State) {
  Screen S;
  env::PaintContext C = S.Gui.ScreenContext ();
  std::vector<uint32_t> Picture (1600 * 1200), Scaled (1000 * 700);
  for (size_t I = 0; I < Picture.size (); I++) Picture[I] = static_cast<uint32_t> (I * 2654435761u);
  for (auto _ : State) {
    env::ScalePixels (Picture.data (), 1600, 1200, Scaled.data (), 1000, 700);
    S.Gui.DrawPixels (C, 10, 40, 1000, 700, Scaled.data (), 1000, true);
  }
  Fps (State);
}
BENCHMARK (BM_ScaleAndBlendPicture)->Unit (benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN ();
