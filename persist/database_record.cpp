#include "persist/database_record.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <memory>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

#include "com/error.h"
#include "com/not_set.h"
#include "interfaces/interfaces.h"
#include "persist/byte_cursor.h"
#include "persist/file_watch.h"
#include "persist/shared_catalogues.h"
#include "platform/per_thread.h"

namespace qs::database {
namespace {

// More than any text or coefficient table needs; what claims to be larger is not a record.
constexpr std::uint64_t kLargestRead = (std::uint64_t{1} << 31) - 1;

// The most that is read at once of what lies between fields.
constexpr std::uint64_t kPiece = std::uint64_t{1} << 18;

// The shapes of X and Y as older data files number them, in the present numbering.
void renewShapes(const Field& field, EquationField& equation) {
  if (equation.xShape == COMxr) {
    if (field.key != Key::HVP && field.key != Key::ST) equation.xShape = COMxp;
  } else if (equation.yShape == COMlnxxo) {
    equation.yShape = COMlnxp;
  }
}

class Decoder {
 public:
  Decoder(std::span<const std::byte> bytes, double version, RecordSink& sink)
      : cursor_(bytes), oldShapes_(version == kVersionWithOldShapes), sink_(sink) {}

  // The field that can be no field; null when all fields were delivered.
  const Field* decode(std::span<const Field> fields) {
    for (const Field& field : fields) {
      if (!decode(field)) return &field;
      if (cursor_.cutOff()) break;
    }
    return nullptr;
  }

 private:
  // False when the field can be no field: the size of a number does not matter, that of any other must not be negative.
  bool decode(const Field& field) {
    const auto size = static_cast<std::uint64_t>(field.size);
    switch (field.kind) {
      case FieldKind::Byte:
        cursor_.skip(1);
        return true;
      case FieldKind::ShortInteger:
        if (const auto value = cursor_.take<std::int16_t>(); !cursor_.cutOff()) sink_.shortInteger(field, value);
        return true;
      case FieldKind::LongInteger:
        if (const auto value = cursor_.take<std::int32_t>(); !cursor_.cutOff()) sink_.longInteger(field, value);
        return true;
      case FieldKind::Double:
        if (const auto value = cursor_.take<double>(); !cursor_.cutOff()) sink_.number(field, value);
        return true;
      case FieldKind::String:
        return field.size >= 0 && text(field, size);
      case FieldKind::Group:
        if (field.size < 0) return false;
        groups(field, size);
        return true;
      case FieldKind::Equation:
        if (field.size < 0) return false;
        equation(field, size);
        return true;
      case FieldKind::Other:
        if (field.size < 0) return false;
        cursor_.skip(size);
        return true;
    }
    return false;
  }

  bool text(const Field& field, std::uint64_t size) {
    const std::string_view bytes = cursor_.takeText(size);
    if (bytes.empty() && cursor_.cutOff()) return true;
    if (!readText(bytes, text_)) return false;
    sink_.text(field, text_);
    return true;
  }

  void groups(const Field& field, std::uint64_t size) {
    groups_.clear();
    groups_.reserve(static_cast<std::size_t>(std::min<std::uint64_t>(size, cursor_.left() / sizeof(GroupCount))));
    while (groups_.size() < size) {
      const auto type = cursor_.take<std::int16_t>();
      const auto count = cursor_.take<std::int16_t>();
      if (cursor_.cutOff()) break;
      groups_.push_back({type, count});
    }
    if (!groups_.empty() || size == 0) sink_.groups(field, groups_);
  }

  void equation(const Field& field, std::uint64_t size) {
    if (cursor_.left() < fieldBytes(FieldKind::Equation, size)) {
      cursor_.skip(fieldBytes(FieldKind::Equation, size));
      return;
    }
    EquationField value{};
    value.shape = cursor_.take<std::int16_t>();
    if (value.shape == kEmptyInteger) value.shape = PropCurveVoid;
    coefficients_.resize(static_cast<std::size_t>(size));
    for (double& coefficient : coefficients_) {
      coefficient = cursor_.take<double>();
      if (coefficient == kEmptyValue) coefficient = 0.0;
    }
    value.coefficients = coefficients_;
    for (double* limit : {&value.tMin, &value.tMax, &value.pMin, &value.pMax}) *limit = cursor_.take<double>();
    value.xShape = cursor_.take<std::int16_t>();
    value.yShape = cursor_.take<std::int16_t>();
    value.xPower = cursor_.take<double>();
    value.yPower = cursor_.take<double>();
    cursor_.skip(kEquationReserved * sizeof(std::int16_t));
    value.fromOldShapes = oldShapes_;
    if (oldShapes_) renewShapes(field, value);
    sink_.equation(field, value);
  }

  ByteCursor cursor_;
  const bool oldShapes_;
  RecordSink& sink_;
  WideString text_;
  std::vector<double> coefficients_;
  std::vector<GroupCount> groups_;
};

// A part of a data file; of no length when nothing of it is there.
struct Extent {
  std::uint64_t offset = 0;
  std::size_t length = 0;
};

// Where `length` bytes from `start` on within a record are, as far as the file goes. Nothing when the record cannot be
// positioned: it would have to lie before the end of the header's own record.
std::optional<Extent> locate(const Header& header, std::uint64_t fileSize, LONG dataRecord, std::uint64_t start,
                             std::uint64_t length) {
  if (!header.recordLength) return Extent{};
  if (*header.recordLength <= 0 || dataRecord < 0) return std::nullopt;
  const std::uint64_t record =
      (static_cast<std::uint64_t>(dataRecord) + 1) * static_cast<std::uint64_t>(*header.recordLength);
  if (record >= fileSize || start >= fileSize - record) return Extent{};
  const std::uint64_t held = std::min(length, fileSize - record - start);
  if (held > kLargestRead) return std::nullopt;
  return Extent{record + start, static_cast<std::size_t>(held)};
}

// The header of the data file that this thread read last, if that was this one.
std::optional<Header> headerOf(const FilePath& path, const InputFile& file) {
  struct LastRead {
    FilePath path;
    FileWatch watch;
    Header header;
  };
  static PerThread<LastRead> lastReads;
  LastRead& last = lastReads.get();
  if (last.path == path && last.watch.holds(file.stamp())) return last.header;

  if (last.path != path) last = {path, {}, {}};
  last.watch.beforeReading(file.stamp());
  std::array<std::byte, kHeaderLength> bytes;
  const auto got = file.readAt(0, bytes);
  if (!got) {
    last.watch = {};
    return std::nullopt;
  }
  last.header = readHeader(std::span(bytes).first(*got));
  return last.header;
}

// What is wrong with a record.
HRESULT badRecord(const Catalogue& catalogue, LONG dataRecord, TextParts why) {
  because(E_FAIL, {catalogue.dataPath().text(), ": record ", dataRecord});
  return also(E_FAIL, why);
}
HRESULT badField(const Catalogue& catalogue, LONG dataRecord, const Field& field) {
  return badRecord(catalogue, dataRecord,
                   {", field ", field.name, field.size < 0 ? ": its size is negative" : ": its text is too long"});
}
HRESULT badPlace(const Catalogue& catalogue, LONG dataRecord) {
  return badRecord(catalogue, dataRecord, {" has no place in the file"});
}
HRESULT unreadable(const Catalogue& catalogue, LONG dataRecord) {
  return badRecord(catalogue, dataRecord, {" cannot be read: ", systemReason().text});
}
HRESULT noData(const Database& database) {
  return because(E_FAIL, {database.catalogue->dataPath().text(), ": ", database.whyNoData.text});
}

std::optional<DataFile> openData(const FilePath& path) {
  auto file = InputFile::open(path);
  if (!file) return std::nullopt;
  const auto header = headerOf(path, *file);
  if (!header) return std::nullopt;
  return DataFile{*std::move(file), *header};
}

}  // namespace

Database openDatabase(WideView directory) {
  constexpr int kReadings = 10;
  constexpr std::chrono::milliseconds kPause{5};
  for (int left = kReadings;; --left) {
    auto catalogue = openCatalogue(directory);
    auto data = openData(catalogue ? catalogue->dataPath() : FilePath(joinPath(directory, widen(kDataFile))));
    if (catalogue && data && catalogue->build() == data->header.build) {
      if (left < kReadings) unsay();
      return {std::move(catalogue), std::move(data)};
    }
    if (left == 1 && catalogue && !data) return {std::move(catalogue), std::nullopt, systemReason()};
    if (left == 1 && catalogue)
      fail(E_FAIL, {catalogue->dataPath().text(), ": it is not of the same build as ", kIndexFile});
    // The catalogue has said why it could not be opened.
    if (left == 1 || (!catalogue && !data)) throw CQSCOMError(E_FAIL);
    std::this_thread::sleep_for(kPause);
  }
}

HRESULT readRecord(const Database& database, LONG dataRecord, RecordSink& sink) {
  if (!database.data) return noData(database);
  const auto& [file, header] = *database.data;
  const Catalogue& catalogue = *database.catalogue;
  const auto extent = locate(header, file.stamp().size, dataRecord, 0, catalogue.recordBytes());
  if (!extent) return badPlace(catalogue, dataRecord);
  std::array<std::byte, 4096> usual;
  std::unique_ptr<std::byte[]> larger;
  if (extent->length > usual.size()) larger = std::make_unique_for_overwrite<std::byte[]>(extent->length);
  const std::span bytes(larger ? larger.get() : usual.data(), extent->length);
  const auto got = file.readAt(extent->offset, bytes);
  if (!got) return unreadable(catalogue, dataRecord);
  const Field* bad = Decoder(bytes.first(*got), header.version, sink).decode(catalogue.fields());
  return bad ? badField(catalogue, dataRecord, *bad) : S_OK;
}

HRESULT readRecord(const Catalogue& catalogue, std::span<const std::byte> dataFile, LONG dataRecord, RecordSink& sink) {
  const Header header = readHeader(dataFile);
  const auto extent = locate(header, dataFile.size(), dataRecord, 0, catalogue.recordBytes());
  if (!extent) return badPlace(catalogue, dataRecord);
  const auto bytes = dataFile.subspan(static_cast<std::size_t>(extent->offset), extent->length);
  const Field* bad = Decoder(bytes, header.version, sink).decode(catalogue.fields());
  return bad ? badField(catalogue, dataRecord, *bad) : S_OK;
}

HRESULT readField(const Database& database, std::span<const CompoundRecord> records, const Field& field,
                  RecordSink& sink, const std::function<void(std::size_t)>& done) {
  if (records.empty()) return S_OK;
  if (!database.data) return noData(database);
  const auto& [file, header] = *database.data;
  const Catalogue& catalogue = *database.catalogue;
  const std::uint64_t size = encodedBytes(field.kind, field.size < 0 ? 0 : static_cast<std::uint64_t>(field.size));
  struct Place : Extent {
    std::size_t record = 0;
  };
  std::vector<Place> places(records.size());
  for (std::size_t i = 0; i < records.size(); ++i) {
    const auto extent = locate(header, file.stamp().size, records[i].dataRecord, field.offset, size);
    if (!extent) return badPlace(catalogue, records[i].dataRecord);
    places[i] = {*extent, i};
  }
  if (!std::ranges::is_sorted(places, {}, &Place::offset)) std::ranges::sort(places, {}, &Place::offset);

  std::vector<std::byte> buffer;
  for (auto next = places.cbegin(); next != places.cend();) {
    // As many as are near to each other.
    const std::uint64_t begin = next->offset;
    std::uint64_t end = begin + next->length;
    auto last = next + 1;
    for (; last != places.cend() && last->offset + last->length <= begin + kPiece; ++last)
      end = std::max(end, last->offset + last->length);
    buffer.resize(std::max(buffer.size(), static_cast<std::size_t>(end - begin)));
    const auto got = file.readAt(begin, std::span(buffer).first(static_cast<std::size_t>(end - begin)));
    if (!got) return unreadable(catalogue, records[next->record].dataRecord);
    const auto piece = std::span(std::as_const(buffer)).first(*got);
    for (; next != last; ++next) {
      const auto bytes = piece.subspan(std::min(static_cast<std::size_t>(next->offset - begin), *got));
      Decoder decoder(bytes.first(std::min(next->length, bytes.size())), header.version, sink);
      if (decoder.decode(std::span(&field, 1))) return badField(catalogue, records[next->record].dataRecord, field);
      done(next->record);
    }
  }
  return S_OK;
}

}  // namespace qs::database
