#include "tools/doctor_command.h"

#include <CLI/CLI.hpp>
#include <ostream>
#include <stdexcept>

#include "tools/doctor.h"

namespace qs::tools {
namespace {

void diagnose(std::ostream& out) {
  out << "qsdb " QS_VERSION ", a program of " << 8 * sizeof(void*) << " bits\n";
  const Report report = examineInstallation();
  for (const std::string& line : report.lines) out << line << '\n';
  if (report.faults == 0) {
    out << "All is well.\n";
    return;
  }
  out << "What to do:\n";
  for (const std::string& remedy : report.remedies) out << " - " << remedy << '\n';
  out.flush();
  throw std::runtime_error("faults found: " + std::to_string(report.faults));
}

}  // namespace

void addDoctorCommand(CLI::App& app, std::ostream& out) {
  CLI::App* command =
      app.add_subcommand("doctor", "Say whether hosts can use the modules, and what to do when they cannot");
  command->footer("Example: qsdb doctor");
  command->callback([&out] { diagnose(out); });
}

}  // namespace qs::tools
