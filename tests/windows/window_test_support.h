// Support for the window base and control driver tests: an environment
// without the driver, a recording message handler and a pool-balance check.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "env/controls/control_driver.h"
#include "env/host/environment.h"
#include "env/gui/paint_context.h"
#include "services/gui_driver.h"
#include "env/windows/window_base.h"

// An 8-bit text as the tables take it.
inline const CHAR8 *Ascii (const char *Text) { return reinterpret_cast<const CHAR8 *> (Text); }

// A directory entry record as the file driver hands it: the name first.
struct Entry {
  char Name[216] = {};
  explicit Entry (const char *N) { std::strncpy (Name, N, sizeof (Name) - 1); }
};

// A resize record: the new size and, when Move, the new position.
inline MESSAGE ResizeMessage (UINT16 Width, UINT16 Height, bool Move = false, UINT16 X = 0, UINT16 Y = 0) {
  MESSAGE Resize {};
  Resize.Type = MSG_RESIZE;
  Resize.Code = 1;
  Resize.Word2 = Width;
  Resize.Word4 = Height;
  Resize.Byte7 = Move ? 1 : 0;
  Resize.Word8 = X;
  Resize.Word10 = Y;
  return Resize;
}

struct RecordedMessage {
  WINDOW_HEADER *Window;
  MESSAGE Message;
};

inline std::vector<RecordedMessage> gMessages;
// Answer of the recording handler (and anything it should do); 0 when unset.
inline std::function<UINT8 (WINDOW_HEADER *, MESSAGE *)> gReaction;

inline UINT8 EFIAPI RecordingHandler (WINDOW_HEADER *Window, MESSAGE *Message) {
  gMessages.push_back ({Window, *Message});
  return gReaction ? gReaction (Window, Message) : 0;
}

class WindowTest : public ::testing::Test {
 protected:
  virtual env::Options EnvironmentOptions () { return env::Options (); }

  void SetUp () override {
    gMessages.clear ();
    gReaction = nullptr;
    Env_ = std::make_unique<env::Environment> (EnvironmentOptions ());
    Baseline_ = Env_->firmware ().LiveAllocations ();
  }

  void TearDown () override {
    Windows ().DestroyAllWindows ();
    Windows ().PumpMessages ();
    EXPECT_EQ (Env_->firmware ().LiveAllocations (), Baseline_) << "pool blocks left behind";
    gReaction = nullptr;
    Env_.reset ();
  }

  env::Environment &Env () { return *Env_; }
  env::WindowBase &Windows () { return Env_->windows (); }
  env::ControlDriver &Controls () { return Env_->controls (); }
  WINDOW_BASE_PROTOCOL *Wb () { return Env_->windows ().Table (); }
  CONTROL_DRIVER_PROTOCOL *Cd () { return Env_->controls ().Table (); }
  size_t LivePool () { return Env_->firmware ().LiveAllocations (); }
  size_t Baseline () const { return Baseline_; }

  WINDOW_HEADER *NewWindow (UINTN Size = 272, WINDOW_HEADER *Parent = nullptr,
                            MESSAGE_HANDLER Handler = RecordingHandler, DESTROY_CALLBACK Destroy = nullptr) {
    return Wb ()->CreateWindow (Size, Parent != nullptr ? Parent : Wb ()->Desktop, Handler, nullptr, Destroy, 10, 20,
                                300, 200);
  }

  // Messages of one type received by one window, in order.
  std::vector<MESSAGE> Received (WINDOW_HEADER *Window, UINT8 Type) const {
    std::vector<MESSAGE> Out;
    for (auto &R : gMessages)
      if (R.Window == Window && R.Message.Type == Type) Out.push_back (R.Message);
    return Out;
  }

 private:
  std::unique_ptr<env::Environment> Env_;
  size_t Baseline_ = 0;
};
