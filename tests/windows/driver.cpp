// Plays a scenario's actions on the DLL's windows from outside, as a user's hands would: it finds
// the windows by their captions and the controls by their names, clicks, types and reads.
//   driver FILE            plays; the exit status is 0 when everything was found as expected
// VLOUT_TEST_PICTURES names the folder for pictures of the screen.
#include <windows.h>

#include <commctrl.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <memory>
#include <sstream>
#include <stdexcept>

#include "tests/scenarios/scenario.h"
#include "text/ascii.h"
#include "windows/text.h"

namespace {

using vlout::tests::Action;
using vlout::tests::Scenario;
using vlout::windows::utf8;
using vlout::windows::wide;

constexpr DWORD kPatience = 60'000;  // milliseconds; the component has its own of 30 seconds

[[noreturn]] void fail(const std::string& text) {
  throw std::runtime_error(text);
}

std::string textOf(HWND window) {
  DWORD_PTR length = 0;
  constexpr UINT kHung = 10'000;  // milliseconds; the component must answer while it waits
  if (SendMessageTimeoutW(window, WM_GETTEXTLENGTH, 0, 0, SMTO_NORMAL, kHung, &length) == 0 &&
      IsWindow(window) != FALSE) {
    fail("a window hangs");
  }
  std::wstring text(static_cast<std::size_t>(length) + 1, 0);
  text.resize(static_cast<std::size_t>(
      SendMessageW(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()))));
  return utf8(text);
}

std::string classOf(HWND window) {
  wchar_t name[64] = L"";
  GetClassNameW(window, name, 64);
  return utf8(name);
}

using Predicate = std::function<bool(HWND)>;

BOOL CALLBACK tryWindow(HWND window, LPARAM state) {
  auto& search = *reinterpret_cast<std::pair<const Predicate*, HWND>*>(state);
  if (!(*search.first)(window)) return TRUE;
  search.second = window;
  return FALSE;
}

HWND findTop(const Predicate& wanted) {
  std::pair<const Predicate*, HWND> search{&wanted, nullptr};
  EnumWindows(tryWindow, reinterpret_cast<LPARAM>(&search));
  return search.second;
}

HWND findChild(HWND parent, const Predicate& wanted) {
  std::pair<const Predicate*, HWND> search{&wanted, nullptr};
  EnumChildWindows(parent, tryWindow, reinterpret_cast<LPARAM>(&search));
  return search.second;
}

// Waits until `look` finds something.
HWND waitFor(const std::string& what, const std::function<HWND()>& look) {
  const DWORD start = GetTickCount();
  while (GetTickCount() - start < kPatience) {
    if (const HWND found = look()) return found;
    Sleep(20);
  }
  fail("waited in vain for " + what);
}

HWND findDialog(const std::string& caption, HWND other = nullptr) {
  return findTop([&](HWND window) {
    return window != other && IsWindowVisible(window) != FALSE && classOf(window) == "#32770" &&
           textOf(window) == caption;
  });
}

// A piece of memory in the process of a window, for messages that take a pointer.
class RemoteMemory {
 public:
  RemoteMemory(HWND window, std::size_t size) {
    DWORD id = 0;
    GetWindowThreadProcessId(window, &id);
    process_ = OpenProcess(PROCESS_VM_OPERATION | PROCESS_VM_READ | PROCESS_VM_WRITE, FALSE, id);
    address_ = VirtualAllocEx(process_, nullptr, size, MEM_COMMIT, PAGE_READWRITE);
  }
  ~RemoteMemory() {
    VirtualFreeEx(process_, address_, 0, MEM_RELEASE);
    CloseHandle(process_);
  }
  RemoteMemory(const RemoteMemory&) = delete;
  RemoteMemory& operator=(const RemoteMemory&) = delete;

  [[nodiscard]] char* address() const { return static_cast<char*>(address_); }
  template <typename Value>
  void write(const Value& value) const {
    WriteProcessMemory(process_, address_, &value, sizeof value, nullptr);
  }
  [[nodiscard]] std::wstring text(std::size_t offset) const {
    wchar_t buffer[512] = L"";
    ReadProcessMemory(process_, address() + offset, buffer, sizeof buffer - 2, nullptr);
    return buffer;
  }

 private:
  HANDLE process_ = nullptr;
  void* address_ = nullptr;
};

std::string cellOf(HWND list, const RemoteMemory& memory, LRESULT row, int column) {
  LVITEMW item{};
  item.iSubItem = column;
  item.cchTextMax = 500;
  item.pszText = reinterpret_cast<wchar_t*>(memory.address() + 1024);
  memory.write(item);
  SendMessageW(list, LVM_GETITEMTEXTW, static_cast<WPARAM>(row),
               reinterpret_cast<LPARAM>(memory.address()));
  return utf8(memory.text(1024));
}

std::string linesOf(HWND list) {
  std::string lines;
  const RemoteMemory memory(list, 4096);
  const LRESULT count = SendMessageW(list, LVM_GETITEMCOUNT, 0, 0);
  for (LRESULT row = 0; row < count; ++row) {
    for (int column = 0; column < 3; ++column)
      lines += cellOf(list, memory, row, column) + (column < 2 ? "|" : "\n");
  }
  return lines;
}

class Player {
 public:
  explicit Player(const Scenario& scenario) : scenario_(scenario) {}

  void perform(const Action& action) {
    if (action.verb == "message") return confirm(action.text);
    if (action.verb == "title") return wait(action.text);
    if (action.verb == "again") return wait(kMain);
    if (action.verb == "picture") return takePicture(action.text);
    if (window_ == nullptr || IsWindow(window_) == FALSE) wait(kMain);
    waitFor("the window to take input", [&] { return ready(window_); });
    if (action.verb == "middle") {
      checkMiddle(action.text);
    } else if (action.verb == "close") {
      PostMessageW(window_, WM_CLOSE, 0, 0);
    } else if (action.verb == "escape" || action.verb == "enter") {
      pressKey(action.verb == "enter" ? VK_RETURN : VK_ESCAPE);
    } else if (action.verb == "line") {
      const std::string lines = linesOf(control("ListView1"));
      if (("\n" + lines).find("\n" + action.text + "\n") == std::string::npos) {
        fail("no line " + action.text + " among\n" + lines);
      }
    } else if (action.verb == "lines") {
      compareLines(linesOf(control("ListView1")), scenario_.lines("[" + action.text + "]"));
    } else {
      use(control(action.control), action);
    }
  }

 private:
  static constexpr const char* kMain = "벨모라 - 아웃룩 연락처 교환";

  static HWND ready(HWND window) { return IsWindowEnabled(window) != FALSE ? window : nullptr; }

  // Another window than the present one, which may have the same caption and be on its way out.
  void wait(const std::string& caption) {
    window_ = waitFor(caption, [&]() -> HWND {
      const HWND found = findDialog(caption, window_);
      return found == nullptr ? nullptr : ready(found);
    });
  }

  [[nodiscard]] HWND control(const std::string& name) const {
    const HWND found = findChild(
        window_, [&](HWND child) { return GetPropW(child, wide(name).c_str()) != nullptr; });
    if (found == nullptr) fail("no control " + name);
    return found;
  }

  void use(HWND control, const Action& action) const {
    if (IsWindowVisible(control) == FALSE) fail(action.control + " is not to be seen");
    if (action.verb == "press") {
      waitFor(action.control + " to be enabled", [&] { return ready(control); });
      PostMessageW(control, BM_CLICK, 0, 0);
    } else if (action.verb == "choose") {
      SendMessageW(control, CB_SETCURSEL, std::stoul(action.text), 0);
      SendMessageW(window_, WM_COMMAND, MAKEWPARAM(GetDlgCtrlID(control), CBN_SELCHANGE),
                   reinterpret_cast<LPARAM>(control));
    } else if (action.verb == "tick") {
      if (SendMessageW(control, BM_GETCHECK, 0, 0) != std::stol(action.text)) {
        SendMessageW(control, BM_CLICK, 0, 0);
      }
    } else if (action.verb == "type") {
      SendMessageW(control, EM_SETSEL, 0, -1);
      SendMessageW(control, WM_CHAR, '\b', 0);
      for (const wchar_t unit : wide(action.text)) SendMessageW(control, WM_CHAR, unit, 0);
    } else if (action.verb == "node") {
      selectNode(control, action.text);
    } else if (action.verb == "state") {
      if (SendMessageW(control, BM_GETCHECK, 0, 0) != std::stol(action.text)) {
        fail("it is the other way round");
      }
    } else if (action.verb == "expect") {
      waitFor("that, but there is " + textOf(control),
              [&] { return textOf(control) == action.text ? control : nullptr; });
    } else {
      fail("what is " + action.verb + "?");
    }
  }

  static void compareLines(const std::string& shown, const std::vector<std::string>& expected) {
    std::istringstream lines(shown);
    std::size_t number = 0;
    for (std::string line; std::getline(lines, line); ++number) {
      const std::string wanted = number < expected.size() ? expected[number] : "nothing";
      if (line == wanted) continue;
      fail(std::to_string(number).append(": ").append(line).append("\nis not ").append(wanted));
    }
    if (number < expected.size()) fail("missing: " + expected[number]);
  }

  void checkMiddle(const std::string& expected) const {
    RECT area{};
    GetWindowRect(window_, &area);
    std::istringstream numbers(expected);
    long x = 0;
    long y = 0;
    numbers >> x >> y;
    x -= (area.left + area.right) / 2;
    y -= (area.top + area.bottom) / 2;
    if (std::max(std::abs(x), std::abs(y)) > 1) {  // the middle of an odd length is rounded
      fail("it is " + std::to_string(x) + " and " + std::to_string(y) + " away from there");
    }
  }

  // Through the system's own queue: the key reaches whatever has the focus, if anything has.
  void pressKey(BYTE key) const {
    const DWORD thread = GetWindowThreadProcessId(window_, nullptr);
    waitFor("the focus", [&]() -> HWND {
      GUITHREADINFO info{};
      info.cbSize = sizeof info;
      return GetGUIThreadInfo(thread, &info) != FALSE ? info.hwndFocus : nullptr;
    });
    SetForegroundWindow(window_);
    keybd_event(key, 0, 0, 0);
    keybd_event(key, 0, KEYEVENTF_KEYUP, 0);
  }

  static void selectNode(HWND tree, const std::string& text) {
    std::istringstream path(text);
    const auto next = [&](WPARAM which, LRESULT from) {
      return SendMessageW(tree, TVM_GETNEXTITEM, which, from);
    };
    waitFor("the tree's nodes", [&] { return reinterpret_cast<HWND>(next(TVGN_ROOT, 0)); });
    LRESULT node = 0;
    for (int number = 0; path >> number;) {
      node = node == 0 ? next(TVGN_ROOT, 0) : next(TVGN_CHILD, node);
      while (--number > 0) node = next(TVGN_NEXT, node);
      if (node == 0) fail("no node " + text);
    }
    SendMessageW(tree, TVM_SELECTITEM, TVGN_CARET, node);
  }

  static void confirm(const std::string& text) {
    const std::string expected = vlout::text::replaceAll(text, "\\n", "\r\n");
    const HWND box = waitFor("a message: " + expected, [] { return findDialog("VLOUTSync"); });
    std::string shown;
    findChild(box, [&](HWND child) {
      if (classOf(child) == "Static") shown += textOf(child);
      return false;
    });
    if (!shown.starts_with(expected)) fail("the message is: " + shown);
    PostMessageW(box, WM_COMMAND, IDOK, 0);
    const DWORD start = GetTickCount();
    while (IsWindow(box) != FALSE && GetTickCount() - start < kPatience) Sleep(10);
  }

  static void takePicture(const std::string& name) {
    const char* const folder = std::getenv("VLOUT_TEST_PICTURES");
    if (folder == nullptr) return;
    Sleep(500);
    std::wstring command =
        L"Z:\\usr\\bin\\import -window root " + wide(folder) + L"/" + wide(name) + L".png";
    STARTUPINFOW start{};
    PROCESS_INFORMATION process{};
    if (CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                       &start, &process) == FALSE) {
      fail("no picture can be taken");
    }
    Sleep(1500);
  }

  const Scenario& scenario_;
  HWND window_ = nullptr;
};

}  // namespace

int main(int argc, char** argv) {
  const std::string file = argc > 1 ? argv[1] : "";
  Action current;
  try {
    const Scenario scenario = Scenario::read(file);
    Player player(scenario);
    for (const Action& action : scenario.actions()) {
      current = action;
      player.perform(action);
    }
    return 0;
  } catch (const std::exception& error) {
    std::cerr << current.verb << ' ' << current.control << ' ' << current.text << ": "
              << error.what() << '\n';
    return 1;
  }
}
