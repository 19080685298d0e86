#include "tools/build_command.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <ostream>
#include <stdexcept>
#include <string>

#include "bank/json_source.h"
#include "persist/database_writer.h"

namespace qs::tools {
namespace {

struct BuildOptions {
  std::string source, directory;
};

database::DatabaseFiles encode(const BuildOptions& options, std::size_t& count) {
  const auto compounds = bank::compoundsOf(bank::readSource(bank::pathOf(options.source)));
  count = compounds.size();
  try {
    return database::encodeDatabase(compounds);
  } catch (const std::invalid_argument& error) {
    throw std::runtime_error(options.source + ": " + error.what());
  }
}

void build(const BuildOptions& options, std::ostream& out) {
  std::size_t count = 0;
  const auto files = encode(options, count);
  database::saveDatabase(files, bank::pathOf(options.directory));
  out << options.directory << ": " << count << " compounds, " << files.index.size() + files.data.size() << " bytes\n";
}

}  // namespace

void addBuildCommand(CLI::App& app, std::ostream& out) {
  const auto options = std::make_shared<BuildOptions>();
  CLI::App* command = app.add_subcommand("build", "Make a database from a compound source in JSON");
  command->add_option("SOURCE", options->source, "The compound source, a JSON file")->required();
  command->add_option("OUTDIR", options->directory, "The directory of the database; made when it is not there")
      ->required();
  command->callback([options, &out] { build(*options, out); });
}

}  // namespace qs::tools
