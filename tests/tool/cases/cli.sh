# The command line: --version, --help on the tool and on every command, usage errors.

run --version
expect_status 0
expect_out <<'OUT'
kova-mapping 2.0.0 (KOVAMappingServices 2.0.0, writes mapping documents of version 12)
OUT

RollBackMappingVersion=1 run --version
expect_status 0
expect_out <<'OUT'
kova-mapping 2.0.0 (KOVAMappingServices 2.0.0, writes mapping documents of version 11)
OUT

run --help
expect_status 0
expect_no_err
for command in check dump convert pack unpack stamp ces diff generate; do
  checks=$((checks + 1))
  grep -q "^  $command  " "$WORK/.out" || fail "--help does not list $command"
done

for command in check dump convert pack unpack stamp ces diff generate; do
  run "$command" --help
  expect_status 0
  expect_no_err
  checks=$((checks + 1))
  grep -q "^Usage: kova-mapping $command \[OPTIONS\]" "$WORK/.out" || fail "$command --help has no usage line"
done

run
expect_status 2
expect_err <<'ERR'
kova-mapping: a command is required (run kova-mapping --help)
ERR

run frobnicate x.json
expect_status 2
expect_err <<'ERR'
kova-mapping: unknown command "frobnicate" (run kova-mapping --help)
ERR

run --frobnicate
expect_status 2
expect_err <<'ERR'
kova-mapping: unknown option "--frobnicate" (run kova-mapping --help)
ERR

run check
expect_status 2
expect_err <<'ERR'
kova-mapping: FILE is required (run kova-mapping check --help)
ERR

run dump a.json b.json
expect_status 2
expect_err <<'ERR'
kova-mapping: The following argument was not expected: b.json (run kova-mapping dump --help)
ERR

run convert "$EXAMPLES/v8_gearbox.json" --compress --plain
expect_status 2
expect_err <<'ERR'
kova-mapping: --compress excludes --plain (run kova-mapping convert --help)
ERR

run generate --references 2 --instances 1 --version 13
expect_status 2
expect_err <<'ERR'
kova-mapping: --version: Value 13 not in range 6 to 12 (run kova-mapping generate --help)
ERR

run generate --references -1 --instances 1
expect_status 2
expect_err <<'ERR'
kova-mapping: --references: Value -1 not in range 0 to 2147483647 (run kova-mapping generate --help)
ERR

run generate --references many --instances 1
expect_status 2
expect_err <<'ERR'
kova-mapping: --references: Value many not in range 0 to 2147483647 (run kova-mapping generate --help)
ERR
