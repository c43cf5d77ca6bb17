# stamp: the synchro stamp of attribute values (base64 of the SHA-256 digest of the stamp text),
# and the stamp text itself with --text. The expected stamps are digested here with openssl.

run stamp "$EXAMPLES/attributes.json"
expect_status 1
expect_out </dev/null
expect_err <<'ERR'
kova-mapping: stamp computation is disabled: set DONOTUSE_ENABLEKSSGEN to enable it
ERR

export DONOTUSE_ENABLEKSSGEN=1

# Names in ascending order; each "name:SET:value" or "name:UNSET:"; lists joined by U+0007.
text=$'Created:SET:1700000000000Finish:SET:2HoleDiameters:SET:6.5\a8.5\a10.5Mass:SET:2.5Material:UNSET:Name:SET:HousingPartNumber:SET:HSG-4410Quantity:SET:4Tolerance:UNSET:Visible:SET:TRUE'
run stamp "$EXAMPLES/attributes.json"
expect_status 0
expect_no_err
expect_text "$(printf '%s' "$text" | digest64)
"
run stamp --text "$EXAMPLES/attributes.json"
expect_status 0
expect_text "$text
"

# Standard input and -o.
run_stdin "$EXAMPLES/attributes.json" stamp - -o stamp.txt
expect_status 0
expect_out </dev/null
expect_file_text stamp.txt "$(printf '%s' "$text" | digest64)
"

# --names: a platform object made of the file, asked for the listed attributes (in any order).
run stamp --names Quantity,Name,Mass "$EXAMPLES/attributes.json"
expect_status 0
expect_text "$(printf '%s' 'Mass:SET:2.5Name:SET:HousingQuantity:SET:4' | digest64)
"
run stamp --names Quantity,Name,Mass --text "$EXAMPLES/attributes.json"
expect_status 0
expect_text 'Mass:SET:2.5Name:SET:HousingQuantity:SET:4
'
run stamp --names Name,Name --text "$EXAMPLES/attributes.json"
expect_status 0
expect_text 'Name:SET:HousingName:SET:Housing
'
run stamp --names Name,Colour "$EXAMPLES/attributes.json"
expect_status 1
expect_err <<ERR
kova-mapping: --names: no attribute "Colour" in $EXAMPLES/attributes.json
ERR
run stamp --names Name,,Mass "$EXAMPLES/attributes.json"
expect_status 1
expect_err <<'ERR'
kova-mapping: --names: empty attribute name in "Name,,Mass"
ERR

# Every kind of value. A list is written with the value form of its first element throughout
# ("mixed" reads "x" as an integer), and a list of lists has no value text.
cat >values.json <<'JSON'
{
  "neg": -42,
  "whole": 3.0,
  "round": 2.56,
  "exp": 1e3,
  "no": false,
  "before": {"time": -1},
  "words": ["a", "b"],
  "empty": [],
  "nested": [[1, 2]],
  "mixed": [1, "x"],
  "ui": {"unset": "integer"},
  "ub": {"unset": "boolean"},
  "ut": {"unset": "time"},
  "us": {"unset": "string"},
  "e": {"enum": 7}
}
JSON
run stamp --text values.json
expect_status 0
expect_text $'before:SET:-1000e:SET:7empty:SET:exp:SET:1000.0mixed:SET:1\a0neg:SET:-42nested:SET:no:SET:FALSEround:SET:2.6ub:UNSET:ui:UNSET:us:UNSET:ut:UNSET:whole:SET:3.0words:SET:a\ab\n'
run stamp values.json
expect_status 0
expect_text "$(printf '%s' $'before:SET:-1000e:SET:7empty:SET:exp:SET:1000.0mixed:SET:1\a0neg:SET:-42nested:SET:no:SET:FALSEround:SET:2.6ub:UNSET:ui:UNSET:us:UNSET:ut:UNSET:whole:SET:3.0words:SET:a\ab' | digest64)
"

# No attributes: the stamp of the empty text.
printf '{}' >none.json
run stamp none.json
expect_status 0
expect_text "$(printf '' | digest64)
"

# The digest covers as many leading bytes as the stamp text has characters.
printf '{"Name": "Grüße"}' >umlaut.json
run stamp umlaut.json
expect_status 0
expect_text "$(printf '%s' 'Name:SET:Grüße' | head -c 14 | digest64)
"

# With "ActivateKOVALogger" set, the stamp service's own lines come first.
printf '{"b": "x", "a": 1}' >two.json
ActivateKOVALogger=1 run stamp two.json
expect_status 0
expect_out <<OUT
[PrdKOVALog][KOVASynchroStampServices]Entering ComputeKOVASynchroStamp from Map
[PrdKOVALog][KOVASynchroStampServices]a - 1
[PrdKOVALog][KOVASynchroStampServices]b - x
[PrdKOVALog][KOVASynchroStampServices]a:SET:1b:SET:x
$(printf '%s' 'a:SET:1b:SET:x' | digest64)
OUT

# Values without a parameter form, and files that are not attribute files.
bad() {
  printf '%s' "$1" >bad.json
  run stamp bad.json
  expect_status 1
  expect_out </dev/null
}
bad '{"n": 2147483648}'
expect_err <<'ERR'
kova-mapping: bad.json: attribute "n": integer 2147483648 does not fit 32 bits
ERR
bad '{"sizes": [1, 2, 99999999999]}'
expect_err <<'ERR'
kova-mapping: bad.json: attribute "sizes" element 3: integer 99999999999 does not fit 32 bits
ERR
bad '{"colour": {"name": "red"}}'
expect_err <<'ERR'
kova-mapping: bad.json: attribute "colour": an object value must be {"time": SECONDS}, {"enum": N} or {"unset": "string"|"integer"|"real"|"boolean"|"time"}
ERR
bad '{"u": {"unset": "colour"}}'
expect_err <<'ERR'
kova-mapping: bad.json: attribute "u": "unset" must be "string", "integer", "real", "boolean" or "time"
ERR
bad '{"t": {"time": 1.5}}'
expect_err <<'ERR'
kova-mapping: bad.json: attribute "t": "time" must be an integer number of seconds
ERR
bad '{"t": {"time": 99999999999999999999}}'
expect_err <<'ERR'
kova-mapping: bad.json: attribute "t": time 99999999999999999999 does not fit 64 bits
ERR
bad '{"e": {"enum": 4294967296}}'
expect_err <<'ERR'
kova-mapping: bad.json: attribute "e": enumeration value 4294967296 does not fit 32 bits
ERR
bad '{"e": {"enum": "red"}}'
expect_err <<'ERR'
kova-mapping: bad.json: attribute "e": "enum" must be an integer
ERR
bad '[1, 2]'
expect_err <<'ERR'
kova-mapping: bad.json: not a JSON object of attribute names and values
ERR
bad '{"a": '
expect_err <<'ERR'
kova-mapping: bad.json: not JSON (error 0x8007000D: invalid data (malformed JSON or base64))
ERR
