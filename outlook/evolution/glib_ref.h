// Owners of what GLib hands out. The adapter's own files use them.
#pragma once

#include <glib-object.h>
#include <memory>
#include <string>

namespace vlout::outlook::evolution {

struct Unref {
  void operator()(gpointer object) const { g_object_unref(object); }
};
template <typename T>
using Ref = std::unique_ptr<T, Unref>;

struct Free {
  void operator()(gpointer memory) const { g_free(memory); }
};
using Text = std::unique_ptr<char, Free>;

// The error that a call leaves behind.
class Error {
 public:
  explicit Error(GError* owned = nullptr) : error_(owned) {}
  ~Error() { g_clear_error(&error_); }
  Error(const Error&) = delete;
  Error& operator=(const Error&) = delete;

  // For the last argument of a call.
  [[nodiscard]] GError** out() {
    g_clear_error(&error_);
    return &error_;
  }
  [[nodiscard]] bool is(GQuark domain) const {
    return error_ != nullptr && error_->domain == domain;
  }
  [[nodiscard]] bool is(GQuark domain, int code) const {
    return g_error_matches(error_, domain, code) != FALSE;
  }
  [[nodiscard]] std::string text() const { return error_ == nullptr ? "" : error_->message; }

 private:
  GError* error_;
};

}  // namespace vlout::outlook::evolution
