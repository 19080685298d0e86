// Opens a database, reads a compound's data record and hands its fields, decoded, to a sink; the sink knows what each
// name is for.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>

#include "persist/database_catalogue.h"
#include "platform/input_file.h"
#include "platform/system_reason.h"

namespace qs::database {

struct DataFile {
  InputFile file;
  Header header;
};

// A catalogue and the data file of the same build. The file stays open, so that a rebuild does not change what is read.
struct Database {
  std::shared_ptr<const Catalogue> catalogue;
  std::optional<DataFile> data;  // nothing when the data file cannot be opened or read; then no record can be read
  SystemReason whyNoData = {};
};

// Opens the database in a directory, for use by this thread and soon. Where one of the files is missing, or where they
// are not of the same build, the database is being replaced: waits a few milliseconds and looks again, ten times at
// most. Throws CQSCOMError(E_FAIL) when they still differ, when there is no index file, and as openCatalogue.
Database openDatabase(WideView directory);

// A UNIFAC group and how often it occurs.
struct GroupCount {
  std::int16_t type;
  std::int16_t count;

  bool operator==(const GroupCount&) const = default;
};

// A correlation with the rewriting of shapes done: no shape becomes PropCurveVoid, an unset coefficient 0.0, and shapes
// of X and Y are those that the present forms use.
struct EquationField {
  std::int32_t shape;                    // tagEquationShapeEnum, not checked
  std::span<const double> coefficients;  // valid during the call only
  double tMin, tMax, pMin, pMax;
  std::int32_t xShape, yShape;  // tagXYShapeEnum, not checked
  double xPower, yPower;
  bool fromOldShapes;  // the data file has the version in which COMxr is normalised with the molecular weight
};

// Takes the fields of a record in their order. Fields of other kinds are not delivered. A method may throw,
// which ends the reading.
class RecordSink {
 public:
  virtual void shortInteger(const Field& field, std::int16_t value) = 0;
  virtual void longInteger(const Field& field, std::int32_t value) = 0;
  virtual void number(const Field& field, double value) = 0;
  virtual void text(const Field& field, WideView value) = 0;                        // see readText
  virtual void groups(const Field& field, std::span<const GroupCount> values) = 0;  // valid during the call only
  virtual void equation(const Field& field, const EquationField& value) = 0;

 protected:
  ~RecordSink() = default;
};

// Reads a whole record: one field after the other, each taking what its encoding takes. A number or an equation that
// the end of the file cuts off is not delivered, nor is anything after it; a text or a group is delivered as far as it
// goes unless nothing of it is there. A record beyond the end of the file is thus S_OK with nothing delivered. E_FAIL
// when the data file cannot be read or the record not positioned, when a text reaches kTextLimit wide
// characters, or when a field other than a number has a negative size; fields before that one have then been delivered.
HRESULT readRecord(const Database& database, LONG dataRecord, RecordSink& sink);

// The same from a data file in memory.
HRESULT readRecord(const Catalogue& catalogue, std::span<const std::byte> dataFile, LONG dataRecord, RecordSink& sink);

// Reads one field of each record, found by its offset, and calls `done` with the record's place in the list after it
// was delivered or found missing. The records come in the order of the file, which is read in few large pieces. Results
// as above, and E_FAIL ends the reading.
HRESULT readField(const Database& database, std::span<const CompoundRecord> records, const Field& field,
                  RecordSink& sink, const std::function<void(std::size_t)>& done);

}  // namespace qs::database
