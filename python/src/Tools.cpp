// Comparison of files, logs and checksums.
#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include <chrono>
#include <vector>

#include "Errors.h"
#include "Module.h"
#include "Texts.h"
#include "tovinCore/Exception.h"
#include "ztbaseclient/tools/CConsoleReader.h"
#include "ztbaseclient/tools/CDiffFiles.h"
#include "ztbaseclient/tools/FileDifferences.h"
#include "ztbaseclient/tools/ztChecksum.h"
#include "ztcore/ztFile.h"

namespace {

py::str text(std::string_view bytes) {
  return py::reinterpret_steal<py::str>(
      PyUnicode_DecodeUTF8(bytes.data(), static_cast<Py_ssize_t>(bytes.size()), "surrogatepass"));
}

// Without the GIL, now and then: whether the keyboard ends it.
class Interruptible {
 public:
  void operator()() {
    const auto now = std::chrono::steady_clock::now();
    if (now - before_ < std::chrono::milliseconds(50)) return;
    before_ = now;
    const py::gil_scoped_acquire acquired;
    if (PyErr_CheckSignals() == 0) return;
    failure_.emplace();
    throw std::runtime_error("interrupted");
  }

  // Calls work without the GIL. What the keyboard threw comes out as it was: the library makes its own of
  // what passes.
  template <class Work>
  void run(Work&& work) {
    try {
      const py::gil_scoped_release released;
      work();
    } catch (...) {
      if (failure_) throw std::move(*failure_);
      throw;
    }
  }

 private:
  std::optional<py::error_already_set> failure_;
  std::chrono::steady_clock::time_point before_ = std::chrono::steady_clock::now();
};

void requireOpen(const std::wstring& name) {
  if (!ztFile::CanOpen(name.c_str(), ztFile::ForReading))
    throw ztFile::OpenFailure(L"Unable to open file %ls", name.c_str());
}

class Files : public CDiffFiles {
 public:
  using CDiffFiles::FileIsBinary;
  explicit Files(Interruptible& watch) : watch_(watch) {}
  void Compared(int64_t) const override { watch_(); }

 private:
  Interruptible& watch_;
};

// A difference as the Python side makes an object of it.
struct Found {
  differences::Line::Kind kind;
  int64_t line1, line2;
  std::string text1, text2;
  struct Field {
    bool isNumber;
    int64_t field1, field2;
    std::optional<std::string> column;
    std::string text1, text2;
    double absolute, relative;
    int digits;
    bool within;
  };
  std::vector<Field> fields;
};

Found kept(const differences::Line& line) {
  Found found{line.kind, line.line1, line.line2, std::string(line.text1), std::string(line.text2), {}};
  for (const differences::Field& field : line.fields)
    found.fields.push_back({field.kind == differences::Field::Kind::Number, field.field1, field.field2,
                            field.column ? std::optional<std::string>(*field.column) : std::nullopt,
                            std::string(field.text1), std::string(field.text2), field.absolute,
                            field.relative, field.digits, field.within});
  return found;
}

// Texts are at no distance from each other.
template <class Value>
py::object ofNumber(const Found::Field& field, Value value) {
  return field.isNumber ? py::cast(value) : py::object(py::none());
}

py::tuple toTuple(const Found& found) {
  static constexpr const char* kinds[] = {"changed", "added", "removed", "equal"};
  py::list fields;
  for (const Found::Field& field : found.fields)
    fields.append(py::make_tuple(field.isNumber ? "number" : "text", field.field1, field.field2,
                                 field.column ? py::object(text(*field.column)) : py::object(py::none()),
                                 text(field.text1), text(field.text2), ofNumber(field, field.absolute),
                                 ofNumber(field, field.relative), ofNumber(field, field.digits),
                                 field.within));
  return py::make_tuple(kinds[static_cast<size_t>(found.kind)], found.line1, found.line2, text(found.text1),
                        text(found.text2), fields);
}

differences::Options optionsOf(const py::dict& given) {
  differences::Options how;
  if (!given["tolerance"].is_none()) how.tolerance = py::cast<int>(given["tolerance"]);
  if (!given["absolute"].is_none()) how.absolute = py::cast<double>(given["absolute"]);
  if (!given["relative"].is_none()) how.relative = py::cast<double>(given["relative"]);
  if (how.tolerance && *how.tolerance < 0) throw py::value_error("tolerance must not be less than 0");
  for (const auto& distance : {how.absolute, how.relative})
    if (distance && !(*distance >= 0)) throw py::value_error("a distance must not be less than 0");
  how.ignoreCase = py::cast<bool>(given["ignore_case"]);
  how.ignoreBlankLines = py::cast<bool>(given["ignore_blank_lines"]);
  how.ignoredColumns = py::cast<std::vector<std::string>>(given["ignore_columns"]);
  if (!given["key"].is_none()) how.key = toUtf8(given["key"], "key");
  if (!given["delimiter"].is_none()) {
    const std::string delimiter = toUtf8(given["delimiter"], "delimiter");
    if (delimiter.size() != 1) throw py::value_error("delimiter must be one character of ASCII");
    how.delimiter = delimiter[0];
  }
  return how;
}

py::tuple compare(py::handle file1, py::handle file2, const py::dict& given) {
  const std::wstring name1 = toFileName(file1), name2 = toFileName(file2);
  const differences::Options how = optionsOf(given);
  std::vector<Found> found;
  differences::Summary sums;
  bool binaryDiffers = false;
  Interruptible watch;
  watch.run([&] {
    requireOpen(name1);
    requireOpen(name2);
    Files files(watch);
    if (files.FileIsBinary(name1.c_str())) {
      try {
        files.CompareFilesBinary(name1.c_str(), name2.c_str());
      } catch (const tovin::DiffErrorException&) {
        binaryDiffers = true;
      }
    } else {
      sums = differences::find(
          name1.c_str(), name2.c_str(), how,
          [&](const differences::Line& line) { found.push_back(kept(line)); }, [&](int64_t) { watch(); });
    }
  });
  py::list list;
  for (const Found& one : found) list.append(toTuple(one));
  return py::make_tuple(sums.within, sums.different, sums.added, sums.removed, sums.largestAbsolute,
                        sums.largestRelative, sums.alignedByBlocks, binaryDiffers, list);
}

// --- logs

class LogReader {
 public:
  LogReader(py::handle path, int64_t position) : name_(toFileName(path)) {
    if (position < 0) throw py::value_error("position must not be less than 0");
    requireOpen(name_);
    reader_ = std::make_unique<CConsoleReader>(name_.c_str(), position);
    if (!reader_->HasSource()) throw ztFile::OpenFailure(L"Unable to open file %ls", name_.c_str());
  }

  // The pairs of the next entry; None when there is no more. With `whole` an entry whose end was not written
  // yet is left for later.
  py::object next(bool whole) {
    std::vector<std::pair<std::string, std::string>> pairs;
    bool any = false;
    {
      const py::gil_scoped_release released;
      any = reader_->VisitNextEntry(
          [&](std::string_view name, std::string_view value) { pairs.emplace_back(name, value); });
      if (whole && !(any && reader_->WasEntryComplete())) {
        reader_->Resume();
        any = false;
      }
    }
    if (!any) return py::none();
    py::list list(pairs.size());
    for (size_t i = 0; i < pairs.size(); ++i)
      list[i] = py::make_tuple(text(pairs[i].first), text(pairs[i].second));
    return list;
  }
  int64_t position() const { return reader_->GetPosition(); }
  int64_t resumePosition() const { return reader_->GetResumePosition(); }

 private:
  std::wstring name_;
  std::unique_ptr<CConsoleReader> reader_;
};

py::str checksum(const py::args& texts) {
  ztChecksum sum;
  for (const py::handle one : texts) sum.AddString(toWideWithoutNul(one, "a text").c_str());
  return toStr(std::wstring_view(sum.GetChecksum()));
}

}  // namespace

void addTools(py::module_& module) {
  module.def("compare", compare);
  py::class_<LogReader>(module, "LogReader")
      .def(py::init<py::handle, int64_t>())
      .def("next", &LogReader::next)
      .def_property_readonly("position", &LogReader::position)
      .def_property_readonly("resume_position", &LogReader::resumePosition);
  module.def("checksum", checksum);
}
