# From lcov records: the share of lines that ran of each of the product's folders, and the lines that did not. Fails below 95 %.
/^SF:/ {
  ours = match($0, /(com|automation|xml|bank|compound|collection|phase|persist|props|hostkit|platform)\/[^\/]*$/) &&
         substr($0, RSTART - 1, 1) == "/"
  file = substr($0, RSTART)
  folder = file
  sub(/\/[^\/]*$/, "", folder)
}
/^DA:/ && ours {
  split(substr($0, 4), line, ",")
  key = file ":" line[1]
  if (!(key in runs)) {
    all[folder]++
    number[key] = line[1]
    keys[++count] = key
  }
  runs[key] += line[2]
}
END {
  for (i = 1; i <= count; ++i) {
    key = keys[i]
    name = key
    sub(/:.*/, "", name)
    folder = name
    sub(/\/[^\/]*$/, "", folder)
    if (runs[key] > 0) ran[folder]++
    else left[name] = left[name] " " number[key]
  }
  for (folder in all) {
    printf "%s: %.1f %% of %d lines\n", folder, 100 * ran[folder] / all[folder], all[folder]
    every += all[folder]
    reached += ran[folder]
  }
  for (name in left) print "not reached: " name left[name]
  printf "all: %.1f %% of %d lines\n", 100 * reached / every, every
  exit reached < 0.95 * every
}
