#include "tools/build_command.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <ostream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "bank/merge.h"
#include "persist/database_writer.h"
#include "tools/bank_arguments.h"

namespace qs::tools {
namespace {

struct BuildOptions {
  std::vector<std::string> places;  // the sources, then the directory
  bool keep = false, replace = false, force = false;
};

bank::Source readAll(const BuildOptions& options, std::ostream& err) {
  std::vector<bank::Source> sources;
  for (std::size_t i = 0; i + 1 < options.places.size(); ++i) sources.push_back(openWhole(options.places[i], err));
  return bank::merge(std::move(sources), options.keep      ? bank::SameNumber::Keep
                                         : options.replace ? bank::SameNumber::Replace
                                                           : bank::SameNumber::Refuse);
}

void build(const BuildOptions& options, std::ostream& out, std::ostream& err) {
  const std::string& name = options.places.back();
  const auto directory = bank::pathOf(name);
  if (!options.force && database::hasDatabase(directory))
    throw std::runtime_error(name + ": there is a database already; --force replaces it");
  bank::Source source = readAll(options, err);
  const std::size_t count = source.compounds.size();
  database::DatabaseFiles files;
  try {
    files = bank::encode(std::move(source));
  } catch (const std::invalid_argument& error) {
    throw std::runtime_error((options.places.size() == 2 ? options.places.front() : name) + ": " + error.what());
  }
  database::saveDatabase(files, directory);
  out << name << ": " << count << " compounds, " << files.index.size() + files.data.size() + files.provenance.size()
      << " bytes\n";
}

}  // namespace

void addBuildCommand(CLI::App& app, std::ostream& out, std::ostream& err) {
  const auto options = std::make_shared<BuildOptions>();
  CLI::App* command = app.add_subcommand("build", "Make a database from one or several sources");
  command
      ->add_option(
          "SOURCE... OUTDIR", options->places,
          "Compound sources in JSON, or databases; then the directory of the database, which is made when it is "
          "not there")
      ->required()
      ->expected(2, CLI::detail::expected_max_vector_size);
  CLI::Option* keep = command->add_flag("--keep", options->keep, "Of a number that two sources have, take the first");
  command->add_flag("--replace", options->replace, "Of a number that two sources have, take the last")->excludes(keep);
  command->add_flag("--force", options->force, "Replace a database that is there");
  command->footer("Example:\n  qsdb build compounds.json ours.json database --replace --force");
  command->callback([options, &out, &err] { build(*options, out, err); });
}

}  // namespace qs::tools
