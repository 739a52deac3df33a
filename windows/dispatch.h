// Late-bound calls on an automation object. The adapters for Outlook and ADO and the skin framework
// use it: member names are looked up once per class, a busy server is asked again for a while, and
// a failure carries the member's name and the object's own text.
#pragma once

#include <initializer_list>
#include <map>
#include <string>
#include <string_view>

#include "windows/com.h"

namespace vlout::windows {

// Whether an object's server may be busy with other things. One in this process never is, and its
// answers say nothing about the other.
enum class Server { MayBeBusy, AtHand };

// The ids of the members of one class, looked up on first use.
class MemberIds {
 public:
  // Throws ComError when the class has no such member.
  [[nodiscard]] DISPID find(IDispatch& object, std::string_view name, Server server);

 private:
  std::map<std::string, DISPID, std::less<>> ids_;
};

// How long to wait for a server that answers "busy", and how often to ask it. Once that was in
// vain, later calls ask only once, until one gets through or a new run begins: a dialog left open
// in the server must not hold up each call of a run for that long.
class BusyPatience {
 public:
  static constexpr DWORD kPause = 200;  // in milliseconds
  static constexpr DWORD kWhole = 30'000;

  // Whether to ask again, after so many milliseconds of waiting.
  [[nodiscard]] static bool lasts(ULONGLONG waited) { return !exhausted_ && waited < kWhole; }
  static void answered(bool busy) { exhausted_ = busy; }
  static void startAfresh() { exhausted_ = false; }

 private:
  inline static bool exhausted_ = false;
};

// An automation object and the class that its members are known by. Every call throws ComError.
class Dispatch {
 public:
  using Arguments = std::initializer_list<_variant_t>;

  Dispatch() = default;
  Dispatch(ComPtr<IDispatch> object, MemberIds& ids, Server server = Server::MayBeBusy)
      : object_(std::move(object)), ids_(&ids), server_(server) {}
  explicit operator bool() const { return object_ != nullptr; }
  [[nodiscard]] IDispatch* get() const { return object_.Get(); }

  // The value of a property, or the result of a method.
  _variant_t call(std::string_view member, const Arguments& arguments = {}) const;
  // The same for an object; `ids` is the class that it belongs to.
  [[nodiscard]] Dispatch object(std::string_view member, MemberIds& ids,
                                const Arguments& arguments = {}) const;
  [[nodiscard]] std::string text(std::string_view member) const;
  [[nodiscard]] long number(std::string_view member) const;
  void put(std::string_view member, const _variant_t& value) const;

 private:
  _variant_t invoke(std::string_view member, WORD kind, const Arguments& arguments) const;

  ComPtr<IDispatch> object_;
  MemberIds* ids_ = nullptr;
  Server server_ = Server::MayBeBusy;
};

}  // namespace vlout::windows
