# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=bash
# The stages of scripts/test and scripts/long: what each needs, does and may take. To be sourced after lib.sh.

# name | budget in seconds, from nothing on two cores with an empty compiler cache | what it shows
STAGES=(
    'gcc|350|g++, optimised as shipped: build everything, run every test'
    'checks|60|include flow, headers alone, kept behaviours, documents, words, format, and their self-tests'
    'sanitizers|200|clang++ with AddressSanitizer and UndefinedBehaviorSanitizer: library and host platform, every test of theirs'
    'fuzz|50|clang++ with libFuzzer: every fuzz target for a moment'
    'arm|160|32-bit ARM: build the library and its recorder tests, run them under qemu-arm'
    'threads|40|ThreadSanitizer over library and host platform: threads that query and write at once'
    'coverage|30|the lines and branches of the library that its unit tests run'
    'size|10|what the library costs, on the host and on ARM: size, relocations, largest frame, heap'
)

stage_names() { printf '%s\n' "${STAGES[@]%%|*}"; }

stage_field() { # <name> <field number>
    printf '%s\n' "${STAGES[@]}" | awk -F'|' -v name="$1" -v field="$2" '$1 == name { print $field }'
}

# need_stage_packages <stage>...: everything the stages need, in one go, before the first of them starts
need_stage_packages() {
    local wanted=('git:git' 'python3:python3' 'abidiff:abigail-tools' 'pkg-config:pkgconf'
        '/usr/include/gtest/gtest.h:libgtest-dev'
        '/usr/include/gmock/gmock.h:libgmock-dev' '/usr/lib/*/faketime/libfaketime.so.1:libfaketime'
        '/usr/lib/python3/dist-packages/prometheus_client/parser.py:python3-prometheus-client'
        '/usr/lib/python3/dist-packages/jsonschema/validators.py:python3-jsonschema'
        'gnuplot:gnuplot-nox' 'ipmi_sim:openipmi' '/usr/sbin/mariadbd:mariadb-server-core')
    local stage
    for stage in "$@"; do
        case $stage in
            checks) wanted+=('clang-format:clang-format' 'mandoc:mandoc' 'systemd-analyze:systemd') ;;
            sanitizers | fuzz)
                wanted+=('clang++:clang'
                    '/usr/lib/llvm-*/lib/clang/*/lib/linux/libclang_rt.asan-*.a:libclang-rt-14-dev')
                ;;
            coverage) wanted+=('gcovr:gcovr') ;;
            arm | size)
                wanted+=('arm-linux-gnueabihf-g++:g++-arm-linux-gnueabihf' 'qemu-arm:qemu-user'
                    '/usr/arm-linux-gnueabihf/include/stdio.h:libc6-dev-armhf-cross'
                    '/usr/src/googletest/CMakeLists.txt:googletest')
                ;;
        esac
    done
    need_build_packages
    need_packages "${wanted[@]}"
}

# run_ctest <preset> [<ctest option>...]: ctest itself fails when no test is selected. Many tests wait for another process
# most of their time, so there are twice as many at once as there are cores.
run_ctest() {
    local preset=$1
    shift
    (cd "$PROJECT_ROOT" && ctest --preset "$preset" -j $((2 * $(nproc))) "$@" </dev/null)
}

# The checks of the tree are the same in every build: one stage runs them.
build_and_test() {
    configure "$1" && build "$1" && run_ctest "$1" -LE '^checks$'
}

sanitized() { # <preset>
    UBSAN_OPTIONS=print_stacktrace=1 ASAN_OPTIONS=detect_stack_use_after_return=1:strict_string_checks=1 \
        build_and_test "$1"
}

stage_gcc() { build_and_test release; }
stage_sanitizers() { sanitized sanitizers; }
stage_arm() { build_and_test arm; }
stage_fuzz() { "$PROJECT_ROOT/scripts/fuzz" "${FUZZ_SECONDS:-3}"; }
stage_checks() { configure release && run_ctest release -L '^checks$'; }

stage_threads() { configure threads && build threads threads_test && run_ctest threads -R '^Threads\.'; }

# The programs of the gcc stage load a library that counts. The rated-power reader is a part of its own test program.
stage_coverage() {
    local counting=$PROJECT_ROOT/build/coverage room
    configure release && configure coverage && build coverage vekdb_pwrmgt rated_power_test || return
    find "$counting" -name '*.gcda' -delete
    for room in db history policy psu query thermal; do
        build release "${room}_test" || return
        LD_LIBRARY_PATH=$counting/src "$PROJECT_ROOT/build/release/tests/$room/${room}_test" --gtest_brief=1 || return
    done
    "$counting/tests/psu/rated_power_test" --gtest_brief=1 || return
    gcovr --root "$PROJECT_ROOT" --filter src/ --exclude-throw-branches --exclude-unreachable-branches \
        --print-summary --txt "$counting/coverage.txt" --fail-under-line 100 --fail-under-branch 98 "$counting"
}

stage_size() {
    configure release && configure arm && build release vekdb_pwrmgt && build arm vekdb_pwrmgt || return
    python3 "$PROJECT_ROOT/tests/abi/sizes.py" "release=$PROJECT_ROOT/build/release" \
        "arm=$PROJECT_ROOT/build/arm=arm-linux-gnueabihf-"
}

is_testless() { [[ " coverage tidy size mutation valgrind packages packages-arm reproducible fuzz " == *" $1 "* ]]; }

# run_stages <stage>...: runs them, keeps each one's output in build/logs, prints the table and the closing line.
# Returns 1 when a stage failed.
run_stages() {
    local logs=$PROJECT_ROOT/build/logs stage log start seconds result rows=() passed=0 failed=0 bad=0
    mkdir -p "$logs"
    for stage in "$@"; do
        log=$logs/$stage.log
        start=$SECONDS
        printf '%-11s %s ... ' "$stage" "$(stage_field "$stage" 3)"
        if ("stage_$stage") >"$log" 2>&1; then result=passed; else result=FAILED; fi
        seconds=$((SECONDS - start))
        count_tests "$log"
        # A stage that is there to run tests and ran none, or skipped them all, has shown nothing.
        if [ $result = passed ] && [ "$stage_passed" -eq 0 ] && ! is_testless "$stage"; then
            result=FAILED
            say "no test was run" >>"$log"
        fi
        # A stage that failed before its tests, or has none, counts as one failed test.
        if [ $result = FAILED ] && [ "$stage_failed" -eq 0 ]; then stage_failed=1; fi
        passed=$((passed + stage_passed))
        failed=$((failed + stage_failed))
        say "$result"
        if [ $result = FAILED ]; then
            bad=1
            grep -vE '^\[[0-9]+/[0-9]+\] (Building|Linking|Creating)|^ +Start +[0-9]+: |\.\.\. +Passed +[0-9.]+ sec$' "$log" | tail -n 80 | sed 's/^/    /' || true
            say "    (all of it: build/logs/$stage.log)"
        elif [ "$stage" = size ]; then
            sed -n '/^ *release *change/,/^largest frame, arm/p' "$log"
        elif [ "$stage" = coverage ]; then
            grep -E '^(lines|branches):' "$log"
        fi
        [ "$stage_skipped" -gt 0 ] && result="$result, $stage_skipped skipped"
        [ $seconds -gt "$(stage_field "$stage" 2)" ] && result="$result, over budget"
        rows+=("$(printf '%-11s %8d %8d %8d %8d  %s' "$stage" "$seconds" "$(stage_field "$stage" 2)" \
            "$stage_passed" "$stage_failed" "$result")")
    done
    say
    printf '%-11s %8s %8s %8s %8s  %s\n' stage seconds budget passed failed result
    printf '%s\n' "${rows[@]}"
    say
    say "$passed passed, $failed failed"
    return $bad
}

# Sets stage_passed, stage_failed and stage_skipped from ctest's own summary line; a skipped test is not a passed one.
count_tests() {
    local summary
    stage_passed=0 stage_failed=0 stage_skipped=0
    summary=$(sed -nE 's/^[0-9]+% tests passed, ([0-9]+) tests? failed out of ([0-9]+)$/\1 \2/p' "$1" | tail -n 1)
    [ -n "$summary" ] || return 0
    stage_skipped=$(grep -cE '^ *[0-9]+/[0-9]+ Test .*\*\*\*Skipped' "$1" || true)
    stage_failed=${summary% *}
    stage_passed=$((${summary#* } - stage_failed - stage_skipped))
}
