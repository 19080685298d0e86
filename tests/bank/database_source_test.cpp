#include "bank/database_source.h"

#include <gmock/gmock.h>

#include "bank/json_source.h"
#include "tests/support/database_builder.h"
#include "tests/support/files.h"

namespace {

using namespace qs::bank;
using namespace qs::test;
using qs::database::encodeDatabase;
using testing::HasSubstr;
using testing::IsEmpty;

// Also where some compounds have an ideal-gas heat capacity of their own, so that it is written out for the others.
TEST(DatabaseSource, HasAllThatAnotherBuildNeeds) {
  Source mixed = readSource(kSourceFolder / "data/compounds.json");
  mixed.compounds[0].data.correlations[qs::Key::IGCP] = {.form = PropCurvePOLY2, .coefficients = {1, 2, 3}};
  for (Source source : {readSource(kSourceFolder / "data/compounds.json"), mixed,
                        readSource(kSourceFolder / "tests/tools/sample_source.json")}) {
    const TemporaryDirectory directory;
    const auto files = encodeDatabase(compoundsOf(std::move(source)));
    qs::database::saveDatabase(files, directory.path());
    std::vector<Finding> findings;
    const auto again = encodeDatabase(compoundsOf(readDatabase(directory.path(), findings)));
    EXPECT_EQ(again.index, files.index);
    EXPECT_EQ(again.data, files.data);
    EXPECT_THAT(findings, IsEmpty());
  }
}

}  // namespace
