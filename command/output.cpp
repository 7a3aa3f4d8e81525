#include "command/output.h"

#include "command/failure.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <limits>
#include <sys/stat.h>
#include <unistd.h>

namespace tarn::command {

namespace {

constexpr size_t buffer_size = size_t{1} << 16;

// The one temporary that a signal has to remove; a fixed array, since a handler may not touch anything else.
std::array<char, 4096> doomed{};

extern "C" void remove_temporary(int signal_number) {
  if (doomed[0]) unlink(doomed.data());
  std::signal(signal_number, SIG_DFL);
  raise(signal_number);
}

void remove_on_signal(const std::string& file) {
  if (file.size() >= doomed.size()) return;
  std::memcpy(doomed.data(), file.c_str(), file.size() + 1);
  for (int number : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) {
    struct sigaction now {};
    if (sigaction(number, nullptr, &now) == 0 && now.sa_handler == SIG_DFL) std::signal(number, remove_temporary);
  }
}

mode_t default_mode() {
  const mode_t mask = umask(0);
  umask(mask);
  return 0666 & ~mask;
}

}

Output::Output(const std::string& name) : path(name) {
  buffer.reserve(buffer_size);
  if (path == "-") {
    descriptor = STDOUT_FILENO;
    return;
  }
  struct stat status {};
  const bool exists = stat(path.c_str(), &status) == 0;
  if (exists && !S_ISREG(status.st_mode)) {
    descriptor = open(path.c_str(), O_WRONLY | O_CLOEXEC);
    if (descriptor < 0) refuse();
    return;
  }
  if (exists) { // behind a link stands the file that is to be replaced
    if (access(path.c_str(), W_OK) != 0) refuse();
    if (char* target = realpath(path.c_str(), nullptr)) {
      path = target;
      free(target);
    }
  }
  temporary = path + '.' + std::string(6, 'X'); // letters of mkostemp's own choice take their place
  descriptor = mkostemp(temporary.data(), O_CLOEXEC);
  if (descriptor < 0) {
    temporary.clear();
    refuse();
  }
  remove_on_signal(temporary);
  fchmod(descriptor, exists ? status.st_mode & 07777 : default_mode());
}

Output::~Output() {
  if (descriptor >= 0 && descriptor != STDOUT_FILENO) close(descriptor);
  if (!temporary.empty()) {
    unlink(temporary.c_str());
    doomed[0] = 0;
  }
}

void Output::refuse() const {
  throw Failure("cannot write " + (path == "-" ? "standard output" : path) + ": " + std::strerror(errno));
}

bool Output::is_terminal() const { return isatty(descriptor) != 0; }

void Output::write(std::string_view bytes) {
  buffer.append(bytes);
  if (buffer.size() >= buffer_size) flush();
}

void Output::flush() {
  std::string_view rest = buffer;
  while (!rest.empty()) {
    const ssize_t written = ::write(descriptor, rest.data(), rest.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) refuse();
    rest.remove_prefix(static_cast<size_t>(written));
  }
  buffer.clear();
}

void Output::commit() {
  flush();
  const int open_file = descriptor;
  descriptor = -1;
  if (close(open_file) != 0) refuse(); // some file systems tell of a full disk only here
  if (temporary.empty()) return;
  if (rename(temporary.c_str(), path.c_str()) != 0) refuse();
  temporary.clear();
  doomed[0] = 0;
}

void append_number(std::string& text, double value, Real real) {
  if (std::isnan(value)) {
    text += "nan";
    return;
  }
  std::array<char, 32> digits;
  const auto end = real == Real::Single
                       ? std::to_chars(digits.data(), digits.data() + digits.size(), static_cast<float>(value)).ptr
                       : std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
  text.append(digits.data(), end);
}

RowWriter::RowWriter(const OutputOptions& options, Real type, const std::vector<std::string>& names)
    : output(options.path), real(type), separator(options.format == "csv" ? ',' : '\t'),
      binary(options.format == "binary") {
  if (binary && output.is_terminal()) throw Failure("binary output is not for a terminal; name a file with --output");
  if (options.format != "csv") return;
  for (const std::string& name : names) {
    separate();
    if (name.find_first_of(",\"\n\r") == name.npos) {
      row += name;
      continue;
    }
    row += '"';
    for (char c : name) row += c == '"' ? "\"\"" : std::string(1, c);
    row += '"';
  }
  end_row();
}

void RowWriter::separate() {
  if (!first) row += separator;
  first = false;
}

void RowWriter::number(double value) {
  if (!binary) {
    separate();
    append_number(row, value, real);
  } else if (real == Real::Single) {
    const float single = static_cast<float>(value);
    row.append(reinterpret_cast<const char*>(&single), sizeof single);
  } else {
    row.append(reinterpret_cast<const char*>(&value), sizeof value);
  }
}

void RowWriter::missing() {
  if (binary) return number(std::numeric_limits<double>::quiet_NaN());
  separate();
  row += "NA";
}

void RowWriter::end_row() {
  if (!binary) row += '\n';
  output.write(row);
  row.clear();
  first = true;
}

void RowWriter::comment(const std::string& words) {
  if (!binary && separator == '\t') output.write("# " + words + '\n');
}

}
