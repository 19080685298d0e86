# Opens the report of the bundled bank in Chromium. Sourced by ./test.

# browse PAGE [QUERY]: the document after its script has run, in build/log/browser.html, and what the page complains of,
# in build/log/browser.log. The browser itself reaches no network.
browse() {
  timeout 120 chromium --headless=new --no-sandbox --disable-gpu --no-first-run --disable-background-networking \
    --disable-component-update --host-resolver-rules='MAP * ~NOTFOUND' --user-data-dir="$PWD/build/browser" \
    --enable-logging=stderr --dump-dom "file://$PWD/$1${2:-}" >build/log/browser.html 2>build/log/browser.log
}

# occurrences PATTERN FILE
occurrences() { grep -oE -- "$1" "$2" | wc -l; }

# One picture for each correlation, the search shows what it finds and nothing else, and nothing is fetched: the page
# forbids it, and the browser tells when it had to refuse something.
report_in_browser() {
  local page=build/log/report.html shown=build/log/browser.html console=build/log/browser.log query
  build/native/bin/qsdb report data/compounds.json -o $page || return 1
  browse $page || return 1
  [[ $(occurrences '<svg ' $shown) == "$(occurrences '"form":' data/compounds.json)" ]] || { echo "pictures" && return 1; }
  [[ $(occurrences '<section [^>]*hidden' $shown) == 0 ]] || { echo "compounds are hidden" && return 1; }
  ! grep CONSOLE $console || return 1
  for query in 7732-18-5 OXIDANE water%20h2o; do
    browse $page "?q=$query" || return 1
    grep -q '<output id="shown">1 of 54</output>' $shown && [[ $(occurrences '<section [^>]*hidden' $shown) == 53 ]] &&
      grep -q '<section id="c19">' $shown || { echo "the search for $query" && return 1; }
  done
  sed 's,</body>,<img src="https://example.com/x.png"></body>,' $page >build/log/fetching.html
  browse build/log/fetching.html || return 1
  grep -q 'CONSOLE.*Content Security Policy' $console || { echo "fetching is not forbidden" && return 1; }
}
