# What `./test deep` runs, sourced by ./test: memory that runs out and files that fail, rebuilds raced by readers, more
# fuzzing than ./test has time for, threads, a soak, and the lines that all of it reaches. DEEP_MINUTES is the time for
# fuzzing, 8 unless it is set.
minutes=${DEEP_MINUTES:-8}
targets=(database_fuzz property_text_fuzz xml_fuzz text_fuzz import_fuzz sequence_fuzz)
llvm=/usr/lib/llvm-14/bin
corpora=build/corpora

# fuzz TARGET: for its part of the time; what it finds new stays in a corpus, what fails in build/log. The file is there
# when it failed.
fuzz() {
  mkdir -p "$corpora/$1"
  rm -f "build/log/$1.failed"
  ASAN_OPTIONS=allocator_may_return_null=1 "build/native-fuzz/bin/$1" "$corpora/$1" \
    -max_total_time=$((minutes * 60 / ${#targets[@]})) -timeout=60 -rss_limit_mb=4096 -max_len=4096 \
    -artifact_prefix="build/log/$1-" -print_final_stats=1 >"build/log/$1.fuzz.log" 2>&1 || touch "build/log/$1.failed"
}

# covered PROGRAM ARGUMENT...: the lines that it runs are counted in build/coverage.
covered() {
  LLVM_PROFILE_FILE="build/coverage/%m-%p.profraw" "build/native-coverage/bin/$1" "${@:2}" >>build/log/covered.log 2>&1
}

# seed: libFuzzer starts from what plain_main.cpp starts from.
seed() {
  local target
  for target in "${targets[@]}"; do
    mkdir -p "$corpora/$target"
    covered "$target" --write-seeds "$corpora/$target"
  done
}

# coverage: the lines of the product's folders that the tests, the scenarios and the corpora reach; 95 % are enough.
coverage() {
  local bin=build/native-coverage/bin target
  rm -rf build/coverage
  covered qs_tests --gtest_brief=1 || echo "qs_tests failed, see build/log/covered.log"
  covered qs_failures --gtest_brief=1 || echo "qs_failures failed, see build/log/covered.log"
  for target in "${targets[@]}"; do
    # What was found after a target failed would end the count.
    while IFS= read -r -d '' input; do echo "$input"; done < <(find "$corpora/$target" -type f -print0) |
      split -l 400 --filter="LLVM_PROFILE_FILE=build/coverage/%m-%p.profraw xargs $bin/$target" >>build/log/covered.log 2>&1 ||
      echo "$target failed, see build/log/covered.log"
  done
  "$llvm/llvm-profdata" merge -sparse build/coverage/*.profraw -o build/coverage/all.profdata
  "$llvm/llvm-cov" export -format=lcov -instr-profile build/coverage/all.profdata "$bin/libqscontainers.so" \
    -object "$bin/libqshostkit.so" -object "$bin/libqsplatform.so" -object "$bin/qs_tests" >build/coverage/all.lcov
  awk -f tests/coverage.awk build/coverage/all.lcov
}

fuzz_all() { for target in "${targets[@]}"; do fuzz "$target"; done; }

build native all
beside soak build/native/bin/qs_soak 600 1 512
build native-coverage qs_tests qs_failures "${targets[@]}"
seed
build native-fuzz "${targets[@]}"
beside fuzzing fuzz_all
build native-tsan qs_soak qs_tests
# The sanitizer's own memory grows with what it has seen.
beside threads build/native-tsan/bin/qs_soak 60 4 16384
build native-asan qs_failures
run_tests failures-asan build/native-asan/bin/qs_failures
tail -n 1 build/log/failures-asan.log
QS_LONG=1 run_tests failures-long build/native/bin/qs_failures
tail -n 1 build/log/failures-long.log
settle threads
run_tests rebuilds-tsan build/native-tsan/bin/qs_tests --gtest_filter='DatabaseRebuild.*:SharedCatalogues.*'
wait "${running[fuzzing]}"
for target in "${targets[@]}"; do
  check "$target, $(sed -n 's/^stat::number_of_executed_units: *//p' "build/log/$target.fuzz.log") executions" \
    test ! -e "build/log/$target.failed"
done
check "lines that are reached" coverage
cat build/log/lines-that-are-reached.log
rm -f build/lint/passed
build native-split all
check "lint with the analyzer" tools/tidy
settle soak
