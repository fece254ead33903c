#include "ztclient/terminal/Output.h"

#include <iostream>

#include "tovinCore/platform/Console.h"
#include "tovinCore/platform/Files.h"
#include "ztclient/terminal/Escaping.h"

namespace platform = tovin::platform;

namespace {

constexpr size_t roomSize = 1 << 16;

}  // namespace

Output::Output() : before_(std::cout.rdbuf()), escapes_(platform::isOutputTerminal()), room_(roomSize) {
  setp(room_.data(), room_.data() + room_.size());
  std::cout.rdbuf(this);
}

Output::~Output() {
  drain(true);
  std::cout.rdbuf(before_);
}

void Output::paint(std::ostream& out, std::string_view sequence) {
  auto* output = dynamic_cast<Output*>(out.rdbuf());
  if (output && output->drain(true)) output->send(sequence);
}

bool Output::finish() {
  std::cout.flush();
  return std::cout.good() && failure_.empty();
}

Output::int_type Output::overflow(int_type c) {
  if (!drain(false)) return traits_type::eof();
  if (!traits_type::eq_int_type(c, traits_type::eof())) sputc(traits_type::to_char_type(c));
  return traits_type::not_eof(c);
}

int Output::sync() { return drain(false) ? 0 : -1; }

// A character of which the rest is still to come waits, unless nothing will come.
bool Output::drain(bool whole) {
  const std::string_view all(pbase(), static_cast<size_t>(pptr() - pbase()));
  const size_t count = escapes_ && !whole ? escaping::wholeCharacters(all) : all.size();
  const std::string rest(all.substr(count));
  const bool done =
      send(escapes_ ? escaping::shown(all.substr(0, count)) : std::string(all.substr(0, count)));
  setp(room_.data(), room_.data() + room_.size());
  sputn(rest.data(), static_cast<std::streamsize>(rest.size()));
  return done;
}

bool Output::send(std::string_view bytes) {
  while (!bytes.empty()) {
    const int64_t put = platform::writeFile(platform::standardOutput(), bytes.data(), bytes.size());
    if (put <= 0) {
      failure_ = platform::lastFailure();
      return false;
    }
    bytes.remove_prefix(static_cast<size_t>(put));
  }
  return true;
}
