// The image viewer: opening a 1024 x 768 JPEG (read and decode), and a
// 4000 x 3000 BMP opened and drawn stretched to its window.
#include <benchmark/benchmark.h>

#include <fstream>
#include <string>

#include "core/surveyor_protocol.h"
#include "env/host/environment.h"
#include "env/windows/window_base.h"
#include "support/driver_fixture.h"
#include "support/image_builders.h"
#include "viewers/viewer_records.h"
#include "viewers/viewers.h"

namespace {

struct Setup {
  TempFolder Folder;
  env::Environment Env;
  UINT8 Volume = 0;
  bool Ok = false;

  Setup () {
    auto Gradient = [] (uint32_t X, uint32_t Y) { return 0xFF000000u | ((X & 0xFF) << 16) | ((Y & 0xFF) << 8) | 0x40; };
    auto Write = [this] (const char *Name, const std::vector<uint8_t> &Bytes) {
      std::ofstream (Folder.Path () / Name, std::ios::binary)
          .write (reinterpret_cast<const char *> (Bytes.data ()), static_cast<std::streamsize> (Bytes.size ()));
    };
    Write ("photo.jpg", test_images::Jpeg (1024, 768, Gradient));
    Write ("large.bmp", test_images::Bmp (4000, 3000, 24, Gradient));
    env::VolumeSpec Spec;
    Spec.Folder = Folder.Path ().string ();
    int V = Env.Mount (Spec);
    if (V < 0 || Env.LoadDriver (&SurveyorEntryPoint) != EFI_SUCCESS) return;
    Volume = static_cast<UINT8> (V);
    Ok = true;
  }
  WINDOW_HEADER *Open (const char *Path) {
    return OpenImageViewer (100, 100, Volume, reinterpret_cast<const CHAR8 *> (Path));
  }
  void Close (WINDOW_HEADER *Window) {
    Env.windows ().SendSysCommand (Window, SYSCMD_CLOSE);
    Env.windows ().PumpMessages ();
  }
};

void BM_OpenJpeg1024x768 (benchmark::State &State) {
  Setup S;
  if (!S.Ok) {
    State.SkipWithError ("driver not loaded");
    return;
  }
  for (auto _ : State) {
    WINDOW_HEADER *Window = S.Open ("\\photo.jpg");
    if (Window == nullptr) {
      State.SkipWithError ("picture not opened");
      break;
    }
    State.PauseTiming ();
    S.Close (Window);
    State.ResumeTiming ();
  }
}
BENCHMARK (BM_OpenJpeg1024x768)->Unit (benchmark::kMillisecond);

void BM_OpenAndDrawBmp4000x3000 (benchmark::State &State) {
  Setup S;
  if (!S.Ok) {
    State.SkipWithError ("driver not loaded");
    return;
  }
  for (auto _ : State) {
    WINDOW_HEADER *Window = S.Open ("\\large.bmp");
    if (Window == nullptr) {
      State.SkipWithError ("picture not opened");
      break;
    }
    DrawImage (reinterpret_cast<IMAGE_VIEWER *> (Window));
    State.PauseTiming ();
    S.Close (Window);
    State.ResumeTiming ();
  }
}
BENCHMARK (BM_OpenAndDrawBmp4000x3000)->Unit (benchmark::kMillisecond);

// Only the stretched drawing of the already decoded 4000 x 3000 picture.
void BM_DrawBmp4000x3000Scaled (benchmark::State &State) {
  Setup S;
  WINDOW_HEADER *Window = S.Ok ? S.Open ("\\large.bmp") : nullptr;
  if (Window == nullptr) {
    State.SkipWithError ("picture not opened");
    return;
  }
  for (auto _ : State) DrawImage (reinterpret_cast<IMAGE_VIEWER *> (Window));
}
BENCHMARK (BM_DrawBmp4000x3000Scaled)->Unit (benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN ();
