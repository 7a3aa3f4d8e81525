#include "command/output.h"

#include "command/failure.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <limits>
#include <sys/stat.h>
#include <unistd.h>

namespace tarn::command {

namespace {

constexpr size_t buffer_size = size_t{1} << 16;

// The temporaries that a signal has to remove; fixed arrays, since a handler may not touch anything else.
std::array<std::array<char, 4096>, 4> all_doomed{};

extern "C" void remove_temporary(int signal_number) {
  for (const auto& name : all_doomed)
    if (name[0]) unlink(name.data());
  std::signal(signal_number, SIG_DFL);
  raise(signal_number);
}

char* remove_on_signal(const std::string& file) {
  const auto place = std::find_if(all_doomed.begin(), all_doomed.end(), [](const auto& name) { return !name[0]; });
  if (place == all_doomed.end() || file.size() >= place->size()) return nullptr;
  std::memcpy(place->data(), file.c_str(), file.size() + 1);
  for (int number : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) {
    struct sigaction now {};
    if (sigaction(number, nullptr, &now) == 0 && now.sa_handler == SIG_DFL) std::signal(number, remove_temporary);
  }
  return place->data();
}

// A descriptor that is not one of the standard streams, which the caller of the program may have closed.
int beside_the_standard_streams(int descriptor) {
  if (descriptor < 0 || descriptor > STDERR_FILENO) return descriptor;
  const int higher = fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  close(descriptor);
  return higher;
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
    descriptor = beside_the_standard_streams(open(path.c_str(), O_WRONLY | O_CLOEXEC));
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
  descriptor = beside_the_standard_streams(descriptor);
  doomed = remove_on_signal(temporary);
  fchmod(descriptor, exists ? status.st_mode & 07777 : default_mode());
}

Output::~Output() {
  if (descriptor >= 0 && descriptor != STDOUT_FILENO) close(descriptor);
  if (!temporary.empty()) {
    unlink(temporary.c_str());
    forget();
  }
}

void Output::forget() {
  if (doomed) *doomed = 0;
  doomed = nullptr;
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
  forget();
}

void check_distinct(const std::vector<std::string>& paths) {
  for (size_t i = 0; i < paths.size(); ++i)
    for (size_t j = 0; j < i; ++j) {
      if (paths[i].empty() || paths[j].empty()) continue;
      std::error_code error;
      namespace fs = std::filesystem;
      const bool device = fs::exists(paths[i], error) && !fs::is_regular_file(paths[i], error);
      const bool standard = paths[i] == "-" || paths[j] == "-";
      if (standard ? paths[i] == paths[j]
                   : !device && fs::weakly_canonical(paths[i], error) == fs::weakly_canonical(paths[j], error))
        throw Failure(std::string("two outputs have the same name, ") +
                      (standard ? "standard output" : paths[i].c_str()));
    }
}

std::string in_one_line(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](char c) { return (c >= 0 && c < ' ') || c == '\x7F'; }, ' ');
  return text;
}

// Well-formed sequences as Unicode's table 3-7 has them.
std::string as_utf8(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const auto byte = [&](size_t i) { return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U; };
    const unsigned first = byte(0), second = byte(1);
    size_t length = first < 0x80 ? 1 : first < 0xC2 ? 0 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : first < 0xF5 ? 4 : 0;
    for (size_t i = 1; i < length; ++i)
      if (byte(i) < 0x80 || byte(i) > 0xBF) length = 0;
    const bool overlong = (first == 0xE0 && second < 0xA0) || (first == 0xF0 && second < 0x90);
    const bool surrogate = first == 0xED && second > 0x9F, beyond = first == 0xF4 && second > 0x8F;
    const bool no_character = first == 0xEF && second == 0xBF && byte(2) > 0xBD;
    if (length == 0 || overlong || surrogate || beyond || no_character) {
      result += "\xEF\xBF\xBD";
      length = length == 3 && no_character ? 3 : 1;
    } else {
      result += text.substr(0, length);
    }
    text.remove_prefix(length);
  }
  return result;
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
  if (!binary && separator == '\t') output.write("# " + in_one_line(words) + '\n');
}

}
