# generate: valid synthetic documents of every version, the same for the same seed.

for version in 7 8 9 10 11 12; do
  run generate --references 5 --instances 3 --version "$version" -o "g$version.json"
  expect_status 0
  expect_out </dev/null
  expect_no_err
done
run generate --references 1 --instances 4 --version 6 -o g6.json
expect_status 0
run check g6.json g7.json g8.json g9.json g10.json g11.json g12.json
expect_status 0
expect_out <<'OUT'
g6.json: ok, version 6, 1 references, 4 instances, root Assembly-1
g7.json: ok, version 7, 5 references, 15 instances, root Assembly-1
g8.json: ok, version 8, 5 references, 15 instances, root Assembly-1
g9.json: ok, version 9, 5 references, 15 instances, root Assembly-1
g10.json: ok, version 10, 5 references, 15 instances, root Assembly-1
g11.json: ok, version 11, 5 references, 15 instances, root Assembly-1
g12.json: ok, version 12, 5 references, 15 instances, root Assembly-1
OUT

# The default version is the current one; the first reference is the root, the others are local.
run generate --references 40 --instances 25 --seed 7
expect_status 0
cp "$WORK/.out" big.json
run check big.json
expect_out <<'OUT'
big.json: ok, version 12, 40 references, 1000 instances, root Assembly-1
OUT
checks=$((checks + 1))
[ "$(grep -o '"IsLocal":false,"PlexoId":"prd-' big.json | wc -l)" -eq 1 ] || fail "more than one reference is not local"
# Every stamp is a versioned 32-byte digest in base64; every id is unique.
checks=$((checks + 1))
[ "$(grep -oE '"KOVASynchroStamp":"V[12]:[A-Za-z0-9+/]{43}="' big.json | wc -l)" -eq 1040 ] || fail "stamps: $(grep -o '"KOVASynchroStamp":"[^"]*"' big.json | head -3)"
checks=$((checks + 1))
[ "$(grep -oE '"kOVAId":"[^"]*"' big.json | sort -u | wc -l)" -eq 1040 ] || fail "kOVA ids are not unique"
checks=$((checks + 1))
[ "$(grep -oE '"PlexoId":"(prd|ins)-[0-9a-f]{16}"' big.json | sort -u | wc -l)" -eq 1040 ] || fail "Plexo ids are not unique"
checks=$((checks + 1))
[ "$(grep -o '"CustomData":' big.json | wc -l)" -gt 0 ] || fail "no custom data"

# The same seed gives the same document; another seed another one. Seed 1 is the default.
run generate --references 40 --instances 25 --seed 7 -o again.json
expect_same big.json again.json
run generate --references 40 --instances 25 --seed 8 -o other.json
checks=$((checks + 1))
! cmp -s big.json other.json || fail "seeds 7 and 8 gave the same document"
run generate --references 3 --instances 2 -o default.json
run generate --references 3 --instances 2 --seed 1 -o seed1.json
expect_same default.json seed1.json

# Version 12 is written exactly as the library writes it.
run_stdin big.json convert -
expect_status 0
expect_same "$WORK/.out" big.json

# Compressed: the envelope of the same document.
run generate --references 40 --instances 25 --seed 7 --compress -o big.envelope
expect_status 0
run unpack big.envelope
expect_same "$WORK/.out" big.json
run check big.envelope
expect_out <<'OUT'
big.envelope: ok, version 12, 40 references, 1000 instances, root Assembly-1
OUT

RollBackMappingVersion=1 run generate --references 2 --instances 1 -o rolled.json
run check rolled.json
expect_out <<'OUT'
rolled.json: ok, version 11, 2 references, 2 instances, root Assembly-1
OUT

run generate --references 0 --instances 3
expect_status 0
expect_text '{"version":12,"References":[]}'
run generate --references 0 --instances 0 --version 6
expect_status 0
expect_text '{"version":6,"References":{}}'
run generate --references 2 --instances 0 --version 7 --seed 3
expect_status 0
cp "$WORK/.out" noinstances.json
run check noinstances.json
expect_out <<'OUT'
noinstances.json: ok, version 7, 2 references, 0 instances, root Assembly-1
OUT

run generate --references 2 --instances 1 --version 6
expect_status 1
expect_out </dev/null
expect_err <<'ERR'
kova-mapping: --references: a version 6 document holds at most one reference
ERR
