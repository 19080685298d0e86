#include "bank/report_pages.h"

#include <algorithm>
#include <set>
#include <string_view>
#include <utility>

#include "bank/compound_text.h"
#include "bank/markup.h"
#include "bank/names.h"
#include "bank/svg.h"
#include "bank/table.h"

namespace qs::bank {
namespace {

using database::CompoundData;
using database::Correlation;

constexpr std::string_view kStyle =
    ":root{color-scheme:light dark}"
    "body{font:15px/1.4 sans-serif;margin:1em auto;max-width:84em;padding:0 1em}"
    "table{border-collapse:collapse;margin:.5em 0}"
    "th,td{border:1px solid #8886;padding:1px 6px;text-align:left;vertical-align:top}"
    "td.n{text-align:right;white-space:nowrap}"
    "section{content-visibility:auto;contain-intrinsic-size:auto 1500px;border-top:3px solid #8886;margin-top:2em}"
    ".k{display:grid;grid-template-columns:repeat(auto-fill,minmax(320px,1fr));gap:1em}"
    ".k svg{max-width:400px}"
    ".k h4{margin:.5em 0 0}"
    ".k p{margin:.2em 0;overflow-wrap:anywhere}"
    "small,.w{color:#777}"
    ".q{color:#c00}"
    ".h{overflow:auto;max-height:40em}"
    "#matrix td{padding:0 3px;text-align:center}"
    "#matrix td.n{text-align:left}"
    "#matrix td:empty{background:#c004}"
    "#matrix th{position:sticky;top:0;background:Canvas}"
    "#matrix th span{writing-mode:vertical-rl}";

// Shows what has all words of the search, and nothing else. The search may come with the address, as in ?q=water.
constexpr std::string_view kScript = R"(
const box = document.getElementById('q'), rows = document.querySelectorAll('[data-q]');
function search() {
  const words = box.value.toLowerCase().split(/\s+/);
  let shown = 0;
  for (const row of rows) {
    const hide = !words.every(word => row.dataset.q.includes(word));
    for (const kind of ['i', 'm', 'c']) {
      const part = document.getElementById(kind + row.id.slice(1));
      if (part) part.hidden = hide;
    }
    if (!hide) ++shown;
  }
  document.getElementById('shown').value = shown + ' of ' + rows.length;
}
box.addEventListener('input', search);
box.value = new URLSearchParams(location.search).get('q') || '';
search();
)";

const KeyEntry& entryOf(Key key) { return kKeys[static_cast<std::size_t>(key)]; }
std::string nameText(Key key) { return narrow(nameOf(key)); }

// The name of the bank's file or directory.
std::string titleOf(const Source& source) {
  const auto place = source.file.lexically_normal();
  return utf8(place.has_filename() ? place.filename() : place.parent_path().filename());
}

bool isDoubtful(const Compound& compound, Key key) { return provenanceOf(compound, key).quality == eQualityDoubtful; }

// Temperatures that a curve is drawn at. A range that was never set is cut to what is worth a look.
std::vector<double> temperaturesOf(const Correlation& correlation) {
  constexpr int kIntervals = 60;
  double from = correlation.tmin, to = correlation.tmax;
  if (to - from > 1e5) {
    from = std::max(from, 50.0);
    to = std::max(from, std::min(to, 2000.0));
  }
  std::vector<double> temperatures;
  for (int i = 0; i < kIntervals; ++i) temperatures.push_back(from + (to - from) * i / kIntervals);
  temperatures.push_back(to);
  return temperatures;
}

Chart chartOf(const Compound& compound, Key key, const Correlation& correlation) {
  Chart chart;
  chart.title = nameText(key) + " of " + compound.data.name;
  chart.xTitle = "K";
  chart.x = temperaturesOf(correlation);
  chart.limits = {correlation.tmin, correlation.tmax};
  chart.isDoubtful = isDoubtful(compound, key);
  const Compound* const one = &compound;
  chart.curves.push_back({"", std::move(makeTable({&one, 1}, {&key, 1}, chart.x).columns[0].values)});
  constexpr std::pair<Key, std::string_view> kMarks[] = {{Key::MP, "Tm"}, {Key::NBP, "Tb"}, {Key::TC, "Tc"}};
  for (const auto& [point, label] : kMarks) {
    const auto found = compound.data.constants.find(point);
    if (found != compound.data.constants.end()) chart.marks.push_back({found->second, label});
  }
  return chart;
}

}  // namespace

// Writes one page.
class ReportPages::Writer {
 public:
  // `home` is the page of the index; empty when that is this page.
  Writer(const ReportPages& pages, std::string_view title, std::string_view home) : pages_(pages), home_(home) {
    page_ << "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\">\n"
             "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; style-src 'unsafe-inline'; "
             "script-src 'unsafe-inline'\">\n"
          << kMark << "\n<meta name=\"viewport\" content=\"width=device-width\">\n<title>";
    page_.text(title) << "</title>\n<style>" << kStyle << kChartStyle << "</style></head>\n<body><h1>";
    page_.text(title) << "</h1>\n";
    if (!home_.empty()) page_ << "<p><a href=\"" << home_ << "\">All compounds</a></p>\n";
  }

  std::string take() {
    page_ << "</body></html>\n";
    return page_.take();
  }

  void summary() {
    std::size_t constants = 0, correlations = 0, doubtful = 0;
    for (const Compound& compound : pages_.source_.compounds) {
      constants += compound.data.constants.size();
      correlations += compound.data.correlations.size();
      for (const auto& [key, provenance] : compound.provenance) doubtful += provenance.quality == eQualityDoubtful;
    }
    page_ << "<p>";
    page_.text(pages_.source_.description)
        << "</p>\n<p>" << pages_.source_.compounds.size() << " compounds, " << constants << " constants, "
        << correlations << " correlations; doubtful values: <span class=\"q\">" << doubtful << "</span></p>\n";
  }

  // `inFolder`: the compounds and the matrix have pages of their own.
  void index(bool inFolder) {
    page_ << "<p><label>Search: <input id=\"q\" type=\"search\" placeholder=\"name, synonym, formula, CAS\"></label> "
             "<output id=\"shown\"></output></p>\n"
             "<div class=\"h\"><table><tr><th>No.</th><th>Name</th><th>Formula</th><th>CAS</th><th>Values</th>"
             "<th>Findings</th></tr>\n";
    for (std::size_t i = 0; i < pages_.ids_.size(); ++i) {
      const CompoundData& compound = pages_.source_.compounds[i].data;
      std::string words = std::to_string(compound.number);
      for (const std::string* text : {&compound.name, &compound.iupacName, &compound.formula, &compound.cas})
        words += ' ' + *text;
      for (const std::string& synonym : compound.synonyms) words += ' ' + synonym;
      page_ << "<tr id=\"i" << pages_.ids_[i] << "\" data-q=\"";
      page_.text(lower(words)) << "\"><td class=\"n\">" << compound.number << "</td><td><a href=\""
                               << (inFolder ? pages_.nameOfPage(i) : "#c" + pages_.ids_[i]) << "\">";
      page_.text(compound.name) << "</a></td><td>";
      page_.text(compound.formula) << "</td><td>";
      page_.text(compound.cas) << "</td><td class=\"n\">" << compound.constants.size() + compound.correlations.size()
                               << "</td><td class=\"n\">";
      const std::size_t findings = pages_.findings_.find(database::describe(compound))->second.size();
      if (findings > 0) page_ << findings;
      page_ << "</td></tr>\n";
    }
    page_ << "</table></div>\n";
    if (inFolder) page_ << "<p><a href=\"" << kMatrixName << "\">Which compound has which value</a></p>\n";
  }

  void script() { page_ << "<script>" << kScript << "</script>\n"; }

  void matrix() {
    page_ << "<p>• a constant, ~ a correlation, <span class=\"q\">red</span> a doubtful one; what is missing is "
             "tinted.</p>\n<div class=\"h\"><table id=\"matrix\"><tr><th>Compound</th>";
    for (const Key key : pages_.keys_)
      page_ << "<th title=\"" << narrow(entryOf(key).help) << "\"><span>" << nameText(key) << "</span></th>";
    page_ << "</tr>\n";
    for (std::size_t i = 0; i < pages_.ids_.size(); ++i) {
      const Compound& compound = pages_.source_.compounds[i];
      page_ << "<tr id=\"m" << pages_.ids_[i] << "\"><td class=\"n\">";
      page_.text(compound.data.name) << "</td>";
      for (const Key key : pages_.keys_) {
        const char* sign = compound.data.correlations.contains(key) ? "~"
                           : compound.data.constants.contains(key)  ? "•"
                                                                    : "";
        page_ << (isDoubtful(compound, key) ? "<td class=\"q\">" : "<td>") << sign << "</td>";
      }
      page_ << "</tr>\n";
    }
    page_ << "</table></div>\n";
  }

  void origins() {
    page_ << "<h2>Sources</h2>\n<table><tr><th>Source</th><th>Title</th><th>Authors</th><th>Year</th><th>Licence</th>"
             "<th>Changes</th></tr>\n";
    for (const auto& [name, number] : pages_.originNumbers_) {
      const auto found = pages_.source_.origins.find(name);
      const Origin origin = found == pages_.source_.origins.end() ? Origin() : found->second;
      page_ << "<tr id=\"s" << number << "\">";
      for (const std::string& text :
           {name, origin.title, origin.authors, origin.year ? std::to_string(*origin.year) : std::string(),
            origin.licence, origin.changes}) {
        page_ << "<td>";
        page_.text(text) << "</td>";
      }
      page_ << "</tr>\n";
    }
    page_ << "</table>\n";
  }

  // The number of findings of each rule, and those of none of the compounds.
  void findingsOfAll() {
    std::map<std::string_view, std::pair<std::size_t, std::size_t>> counts;  // open and waived
    for (const auto& [compound, findings] : pages_.findings_) {
      for (const Finding* finding : findings) {
        auto& [open, waived] = counts[finding->rule];
        ++(finding->waiver.empty() ? open : waived);
      }
    }
    page_ << "<h2>Findings of the check</h2>\n";
    if (counts.empty()) {
      page_ << "<p>None.</p>\n";
      return;
    }
    page_ << "<table><tr><th>Rule</th><th>Open</th><th>Waived</th></tr>\n";
    for (const auto& [rule, count] : counts) {
      page_ << "<tr><td>";
      page_.text(rule) << "</td><td class=\"n\">" << count.first << "</td><td class=\"n\">" << count.second
                       << "</td></tr>\n";
    }
    page_ << "</table>\n";
    findings("");
  }

  void compound(std::size_t place) {
    const Compound& compound = pages_.source_.compounds[place];
    identity(compound.data);
    findings(database::describe(compound.data));
    constants(compound);
    if (compound.data.correlations.empty()) return;
    page_ << "<h3>Correlations <small>Tm melting, Tb boiling, Tc critical temperature; dashed: limits of the "
             "range</small></h3>"
             "<div class=\"k\">\n";
    for (const auto& [key, data] : compound.data.correlations) correlation(compound, key, data);
    page_ << "</div>\n";
  }

  void section(std::size_t place) {
    const CompoundData& compound = pages_.source_.compounds[place].data;
    page_ << "<section id=\"c" << pages_.ids_[place] << "\"><h2>" << compound.number << " ";
    page_.text(compound.name) << "</h2>\n";
    this->compound(place);
    page_ << "</section>\n";
  }

  void heading(std::string_view text) { page_ << "<h2>" << text << "</h2>\n"; }

 private:
  void identity(const CompoundData& compound) {
    page_ << "<table>";
    for (const auto& [name, text] : identityText(compound)) {
      page_ << "<tr><th>" << name << "</th><td>";
      page_.text(text) << "</td></tr>\n";
    }
    page_ << "</table>\n";
  }

  void findings(const std::string& about) {
    const auto found = pages_.findings_.find(about);
    if (found == pages_.findings_.end() || found->second.empty()) return;
    page_ << "<table><tr><th>Finding</th><th>Field</th><th>Message</th></tr>\n";
    for (const Finding* finding : found->second) {
      page_ << (finding->waiver.empty() ? "<tr><td>" : "<tr class=\"w\"><td>");
      page_.text(finding->rule) << "</td><td>";
      if (about.empty() && !finding->compound.empty()) page_.text(finding->compound) << " ";
      page_.text(finding->field) << "</td><td>";
      page_.text(finding->message);
      if (!finding->waiver.empty()) (page_ << "<br>waived: ").text(finding->waiver);
      page_ << "</td></tr>\n";
    }
    page_ << "</table>\n";
  }

  void origin(const std::string& name) {
    if (name.empty()) return;
    page_ << "<a href=\"" << home_ << "#s" << pages_.originNumbers_.find(name)->second << "\">";
    page_.text(name) << "</a>";
  }

  void constants(const Compound& compound) {
    if (compound.data.constants.empty()) return;
    page_ << "<h3>Constants</h3>\n<table><tr><th>Key</th><th>Property</th><th>Value</th><th>Unit</th><th>Source</th>"
             "<th>Quality</th><th>Note</th></tr>\n";
    for (const auto& [key, value] : compound.data.constants) {
      const Provenance& provenance = provenanceOf(compound, key);
      page_ << (isDoubtful(compound, key) ? "<tr class=\"q\"><td>" : "<tr><td>") << nameText(key) << "</td><td>"
            << narrow(entryOf(key).help) << "</td><td class=\"n\">" << value << "</td><td>" << unitOf(key)
            << "</td><td>";
      origin(provenance.origin);
      page_ << "</td><td>";
      page_.text(qualityText(provenance)) << "</td><td>";
      page_.text(provenance.note) << "</td></tr>\n";
    }
    page_ << "</table>\n";
  }

  void correlation(const Compound& compound, Key key, const Correlation& correlation) {
    const Provenance& provenance = provenanceOf(compound, key);
    page_ << "<div><h4" << (isDoubtful(compound, key) ? " class=\"q\">" : ">") << nameText(key) << " <small>"
          << narrow(entryOf(key).help) << ", " << unitOf(key) << "</small></h4>";
    appendChart(page_, chartOf(compound, key, correlation));
    page_ << "<p>";
    page_.text(formulaText(correlation)) << "</p><p>";
    page_ << coefficientText(correlation) << "</p><p>" << rangeText(correlation);
    if (!provenance.origin.empty()) page_ << "; ";
    origin(provenance.origin);
    for (const std::string& text : {qualityText(provenance), provenance.note})
      if (!text.empty()) (page_ << "; ").text(text);
    page_ << "</p></div>\n";
  }

  const ReportPages& pages_;
  const std::string_view home_;
  Markup page_;
};

ReportPages::ReportPages(const Source& source, std::span<const Finding> findings) : source_(source) {
  std::set<Key> keys;
  std::set<std::string> taken;
  for (const auto& [name, origin] : source.origins) originNumbers_.emplace(name, originNumbers_.size());
  for (const Compound& compound : source.compounds) {
    for (const auto& [key, value] : compound.data.constants) keys.insert(key);
    for (const auto& [key, value] : compound.data.correlations) keys.insert(key);
    for (const auto& [key, provenance] : compound.provenance)
      originNumbers_.emplace(provenance.origin, originNumbers_.size());
    std::string id = std::to_string(compound.data.number);
    if (!taken.insert(id).second) id += '-' + std::to_string(ids_.size() + 1);  // where a source has a number twice
    ids_.push_back(std::move(id));
    findings_[database::describe(compound.data)];
  }
  originNumbers_.erase("");
  keys_.assign(keys.begin(), keys.end());
  for (const Finding& finding : findings) {
    const auto found = findings_.find(finding.compound);
    (found == findings_.end() ? findings_[""] : found->second).push_back(&finding);
  }
}

std::string ReportPages::onePage(const std::function<void(std::size_t)>& done) const {
  Writer page(*this, titleOf(source_), "");
  page.summary();
  page.index(false);
  page.heading("Which compound has which value");
  page.matrix();
  page.findingsOfAll();
  for (std::size_t i = 0; i < ids_.size(); ++i) {
    page.section(i);
    done(i + 1);
  }
  page.origins();
  page.script();
  return page.take();
}

std::string ReportPages::indexPage() const {
  Writer page(*this, titleOf(source_), "");
  page.summary();
  page.index(true);
  page.findingsOfAll();
  page.origins();
  page.script();
  return page.take();
}

std::string ReportPages::matrixPage() const {
  Writer page(*this, "Which compound has which value", kIndexName);
  page.matrix();
  return page.take();
}

std::string ReportPages::compoundPage(std::size_t place) const {
  const CompoundData& data = source_.compounds[place].data;
  Writer page(*this, std::to_string(data.number) + ' ' + data.name, kIndexName);
  page.compound(place);
  return page.take();
}

}  // namespace qs::bank
