# tree: the product structure as text, with its marks, depth limit, cycles, absent and unreached
# references, and its errors.

# The conveyor: the root, two instances of the same part, a frame holding two screws of a standard
# part that the table does not map, a motor support.
run tree "$EXAMPLES/v12_conveyor.json"
expect_status 0
expect_no_err
expect_out <<'OUT'
reference CNV-1000 (root)
├── instance RLR-1010.1
│   └── reference RLR-1010 (local)
├── instance RLR-1010.2
│   └── reference RLR-1010 (local)
├── instance FRM-1020.1
│   └── reference FRM-1020 (local)
│       ├── instance ISO4762-M8x30.1 (local)
│       │   └── reference ISO4762-M8x30 (absent)
│       └── instance ISO4762-M8x30.2 (local)
│           └── reference ISO4762-M8x30 (absent)
└── instance Motorträger-1030.1
    └── reference Motorträger-1030 (local)
OUT

# The envelope holds the same document; standard input and -o.
run tree "$EXAMPLES/v12_conveyor.json" -o conveyor.txt
expect_status 0
expect_out </dev/null
run_stdin "$EXAMPLES/v12_conveyor.envelope" tree -
expect_status 0
expect_same conveyor.txt "$WORK/.out"

# Plain ASCII.
run tree --ascii "$EXAMPLES/v8_gearbox.json"
expect_status 0
expect_out <<'OUT'
reference GBX-100 (root)
|-- instance SHF-210.1
|   `-- reference SHF-210 (local)
|       `-- instance DIN6885-A6x6x20.1 (local)
|           `-- reference DIN6885-A6x6x20 (absent)
|-- instance GR-311.1
|   `-- reference GR-311 (local)
`-- instance GR-311.2
    `-- reference GR-311 (local)
OUT

# Version 6 and version 10 documents.
run tree "$EXAMPLES/v6_bracket.json"
expect_status 0
expect_out <<'OUT'
reference BRK-2041 (root)
├── instance ISO4762-M6x20.1
│   └── reference ISO4762-M6x20 (absent)
└── instance ISO4762-M6x20.2
    └── reference ISO4762-M6x20 (absent)
OUT
run tree --ascii "$EXAMPLES/v10_pump.json"
expect_status 0
expect_out <<'OUT'
reference PMP-500 (root)
|-- instance IMP-510.1
|   `-- reference IMP-510 (local)
`-- instance ISO4032-M8.1 (local)
    `-- reference ISO4032-M8 (absent)
OUT

# --max-depth counts instances below the top: what is cut is marked.
run tree --max-depth 0 "$EXAMPLES/v12_conveyor.json"
expect_status 0
expect_out <<'OUT'
reference CNV-1000 (root, depth limit)
OUT
run tree --max-depth 1 --ascii "$EXAMPLES/v12_conveyor.json"
expect_status 0
expect_out <<'OUT'
reference CNV-1000 (root)
|-- instance RLR-1010.1
|   `-- reference RLR-1010 (local)
|-- instance RLR-1010.2
|   `-- reference RLR-1010 (local)
|-- instance FRM-1020.1
|   `-- reference FRM-1020 (local, depth limit)
`-- instance Motorträger-1030.1
    `-- reference Motorträger-1030 (local)
OUT
run tree --max-depth 2 "$EXAMPLES/v12_conveyor.json" -o depth2.txt
expect_status 0
expect_same conveyor.txt depth2.txt

# A instantiates B, which instantiates A again and C; C instantiates B. Each reference met again on
# its own path is a cycle, not expanded.
cat >cycle.json <<'JSON'
{"version":12,"References":[
 {"kOVAId":"A","PlexoId":"pa","IsLocal":false,"KOVASynchroStamp":"V2:AA==","Instances":[
  {"kOVAId":"A.1","PlexoId":"ia1","IsLocal":false,"RefId":"B","KOVASynchroStamp":"V2:AA=="}]},
 {"kOVAId":"B","PlexoId":"pb","IsLocal":true,"KOVASynchroStamp":"V2:AA==","Instances":[
  {"kOVAId":"B.1","PlexoId":"ib1","IsLocal":true,"RefId":"A","KOVASynchroStamp":"V2:AA=="},
  {"kOVAId":"B.2","PlexoId":"ib2","IsLocal":false,"RefId":"C","KOVASynchroStamp":"V2:AA=="}]},
 {"kOVAId":"C","PlexoId":"pc","IsLocal":true,"KOVASynchroStamp":"V2:AA==","Instances":[
  {"kOVAId":"C.1","PlexoId":"ic1","IsLocal":true,"RefId":"B","KOVASynchroStamp":"V2:AA=="}]}
]}
JSON
run tree cycle.json
expect_status 0
expect_no_err
expect_out <<'OUT'
reference A (root)
└── instance A.1
    └── reference B (local)
        ├── instance B.1 (local)
        │   └── reference A (root, cycle)
        └── instance B.2
            └── reference C (local)
                └── instance C.1 (local)
                    └── reference B (local, cycle)
OUT

# A reference that instantiates itself.
printf '%s' '{"version":12,"References":[{"kOVAId":"A","PlexoId":"p","IsLocal":false,"KOVASynchroStamp":"V2:AA==","Instances":[{"kOVAId":"A.1","PlexoId":"q","IsLocal":false,"RefId":"A","KOVASynchroStamp":"V2:AA=="}]}]}' >self.json
run tree --ascii self.json
expect_status 0
expect_out <<'OUT'
reference A (root)
`-- instance A.1
    `-- reference A (root, cycle)
OUT

# The cycles above as a graph: each object once; edges closing a cycle do not rank their target.
run tree --format dot --ascii cycle.json
expect_status 0
expect_out <<'OUT'
digraph tree {
  node [fontname="Helvetica", fontsize=10];
  edge [color="gray40"];
  r0 [shape=box, penwidth=2, label="A\n(root)"];
  i0 [shape=ellipse, label="A.1"];
  r1 [shape=box, style=filled, fillcolor="gray92", label="B\n(local)"];
  i1 [shape=ellipse, style=filled, fillcolor="gray92", label="B.1\n(local)"];
  i2 [shape=ellipse, label="B.2"];
  r2 [shape=box, style=filled, fillcolor="gray92", label="C\n(local)"];
  i3 [shape=ellipse, style=filled, fillcolor="gray92", label="C.1\n(local)"];
  r0 -> i0;
  i0 -> r1 [style=dashed];
  r1 -> i1;
  i1 -> r0 [style=dashed, constraint=false];
  r1 -> i2;
  i2 -> r2 [style=dashed];
  r2 -> i3;
  i3 -> r1 [style=dashed, constraint=false];
}
OUT
checks=$((checks + 1))
if ! dot -Tsvg "$WORK/.out" -o cycle.svg 2>dot.err || [ -s dot.err ]; then
  fail "dot does not accept the graph: $(cat dot.err)"
fi

# References the root does not reach come after its tree: first those nothing instantiates (S),
# then those only a cycle reaches (P and Q instantiate each other; P comes first in the table). A
# reference already listed elsewhere is "see above"; an instance of a reference the table does not
# have leads to an absent reference. An empty kOVA id is shown quoted.
cat >orphans.json <<'JSON'
{"version":12,"References":[
 {"kOVAId":"P","PlexoId":"pp","IsLocal":true,"KOVASynchroStamp":"V2:AA==","Instances":[
  {"kOVAId":"P.1","PlexoId":"ip1","IsLocal":true,"RefId":"Q","KOVASynchroStamp":"V2:AA=="}]},
 {"kOVAId":"ROOT","PlexoId":"pr","IsLocal":false,"KOVASynchroStamp":"V2:AA==","Instances":[
  {"kOVAId":"ROOT.1","PlexoId":"ir1","IsLocal":false,"RefId":"T","KOVASynchroStamp":"V2:AA=="},
  {"kOVAId":"ROOT.2","PlexoId":"ir2","IsLocal":false,"RefId":"","KOVASynchroStamp":"V2:AA=="}]},
 {"kOVAId":"Q","PlexoId":"pq","IsLocal":true,"KOVASynchroStamp":"V2:AA==","Instances":[
  {"kOVAId":"Q.1","PlexoId":"iq1","IsLocal":true,"RefId":"P","KOVASynchroStamp":"V2:AA=="},
  {"kOVAId":"Q.2","PlexoId":"iq2","IsLocal":true,"RefId":"U","KOVASynchroStamp":"V2:AA=="}]},
 {"kOVAId":"S","PlexoId":"ps","IsLocal":true,"KOVASynchroStamp":"V2:AA==","Instances":[
  {"kOVAId":"S.1","PlexoId":"is1","IsLocal":true,"RefId":"U","KOVASynchroStamp":"V2:AA=="},
  {"kOVAId":"S.2","PlexoId":"is2","IsLocal":true,"RefId":"V","KOVASynchroStamp":"V2:AA=="}]},
 {"kOVAId":"U","PlexoId":"pu","IsLocal":true,"KOVASynchroStamp":"V2:AA==","Instances":[
  {"kOVAId":"U.1","PlexoId":"iu1","IsLocal":true,"RefId":"W","KOVASynchroStamp":"V2:AA=="}]},
 {"kOVAId":"T","PlexoId":"pt","IsLocal":true,"KOVASynchroStamp":"V2:AA=="}
]}
JSON
run tree orphans.json
expect_status 0
expect_out <<'OUT'
reference ROOT (root)
├── instance ROOT.1
│   └── reference T (local)
└── instance ROOT.2
    └── reference "" (absent)
reference S (local, unreached)
├── instance S.1 (local)
│   └── reference U (local)
│       └── instance U.1 (local)
│           └── reference W (absent)
└── instance S.2 (local)
    └── reference V (absent)
reference P (local, unreached)
└── instance P.1 (local)
    └── reference Q (local)
        ├── instance Q.1 (local)
        │   └── reference P (local, cycle)
        └── instance Q.2 (local)
            └── reference U (local, see above)
OUT

# No root: every reference is the top of a tree. An empty table shows nothing.
printf '%s' '{"version":12,"References":[{"kOVAId":"L1","PlexoId":"p1","IsLocal":true,"KOVASynchroStamp":"V2:AA=="},{"kOVAId":"L2","PlexoId":"p2","IsLocal":true,"KOVASynchroStamp":"V2:AA=="}]}' >noroot.json
run tree noroot.json
expect_status 0
expect_out <<'OUT'
reference L1 (local, unreached)
reference L2 (local, unreached)
OUT
printf '%s' '{"version":12,"References":[]}' >empty.json
run tree empty.json
expect_status 0
expect_no_err
expect_text ""

# Errors: a file that cannot be read or a document that does not read is one line on standard
# error, exit status 1, and nothing written; options out of range are usage errors.
run tree missing.json
expect_status 1
expect_out </dev/null
expect_err <<'ERR'
kova-mapping: missing.json: not found
ERR
cp "$EXAMPLES/broken_v11.json" broken.json
printf 'kept' >kept.txt
run tree broken.json -o kept.txt
expect_status 1
expect_err <<'ERR'
kova-mapping: broken.json: error 0x80004005: UNVALUATED MANDATORY FIELD IsLocal; UNVALUATED MANDATORY FIELD KOVASynchroStamp
ERR
expect_file_text kept.txt "kept"
run tree --format svg "$EXAMPLES/v12_conveyor.json"
expect_status 2
expect_out </dev/null
expect_err <<'ERR'
kova-mapping: --format: svg not in {text,dot} (run kova-mapping tree --help)
ERR
run tree --max-depth 1001 "$EXAMPLES/v12_conveyor.json"
expect_status 2
run tree --max-depth -1 "$EXAMPLES/v12_conveyor.json"
expect_status 2
run diff --format png "$EXAMPLES/v12_conveyor.json" "$EXAMPLES/v12_conveyor.json"
expect_status 2
expect_err <<'ERR'
kova-mapping: --format: png not in {text,dot} (run kova-mapping diff --help)
ERR

# The command is listed, with its options.
run --help
expect_status 0
checks=$((checks + 1))
grep -q '^  tree  ' "$WORK/.out" || fail "--help does not list tree"
run tree --help
expect_status 0
checks=$((checks + 1))
grep -q -- '--max-depth N .*default 100, at most 1000' "$WORK/.out" || fail "tree --help does not give the depth limit"
