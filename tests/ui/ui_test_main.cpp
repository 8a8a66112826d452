// The test program of the windows: a wx application whose main loop runs the tests.

#include <gtest/gtest.h>
#include <wx/app.h>
#include <wx/log.h>

#include <cstdio>
#include <exception>

namespace korvex {
namespace {

// What wx complains about is a failure of the test that provoked it.
class FailingLog : public wxLog {
 protected:
  void DoLogRecord(wxLogLevel level, const wxString& text, const wxLogRecordInfo&) override {
    if (level <= wxLOG_Warning) ADD_FAILURE() << "wx: " << text.utf8_string();
  }
};

class UiTests : public wxApp {
 public:
  bool OnInit() override { return true; }  // wx would read the arguments, which are the tests'
  int OnRun() override {
    SetExitOnFrameDelete(false);
    delete wxLog::SetActiveTarget(new FailingLog);
    CallAfter([this] {
      status_ = RUN_ALL_TESTS();
      ExitMainLoop();
    });
    wxApp::OnRun();
    return status_;
  }
  bool OnExceptionInMainLoop() override { throw; }
  void OnAssertFailure(const wxChar* file, int line, const wxChar*, const wxChar* condition,
                       const wxChar* message) override {
    ADD_FAILURE_AT(wxString(file).utf8_str(), line)
        << "wx assertion " << wxString(condition) << ": " << wxString(message);
  }

 private:
  int status_ = 1;
};

}  // namespace
}  // namespace korvex

wxIMPLEMENT_APP_NO_MAIN(korvex::UiTests);

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  return wxEntry(argc, argv);
}
