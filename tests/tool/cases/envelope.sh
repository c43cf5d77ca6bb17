# pack / unpack: the compressed envelope "V<version>:<UTF-8 bytes>:<base64 of the zlib stream>".

# The payload opened with zlib itself (perl's Compress::Zlib), not with the library.
inflate() { base64 -d | perl -MCompress::Zlib -e 'local $/; my $t = uncompress(<STDIN>); defined $t or exit 1; print $t'; }

source_text="$EXAMPLES/v12_conveyor.json"
bytes=$(wc -c <"$source_text")
run pack "$source_text" -o conveyor.envelope
expect_status 0
expect_out </dev/null
expect_no_err
checks=$((checks + 1))
prefix="V12:$bytes:"
[ "$(head -c ${#prefix} conveyor.envelope)" = "$prefix" ] || fail "prefix $(head -c 12 conveyor.envelope), expected $prefix"
tail -c +$((${#prefix} + 1)) conveyor.envelope | inflate >inflated.json
checks=$((checks + 1))
cmp -s inflated.json "$source_text" || fail "the payload does not inflate to the packed text"

run unpack conveyor.envelope -o unpacked.json
expect_status 0
expect_same unpacked.json "$source_text"
run_stdin conveyor.envelope unpack -
expect_status 0
expect_same "$WORK/.out" "$source_text"
run unpack "$EXAMPLES/v12_conveyor.envelope"
expect_status 0
expect_same "$WORK/.out" "$source_text"

# Any text packs, JSON or not.
printf 'not a mapping document\n' >note.txt
run pack note.txt
expect_status 0
checks=$((checks + 1))
[ "$(head -c 7 "$WORK/.out")" = "V12:23:" ] || fail "prefix of the note's envelope: $(head -c 12 "$WORK/.out")"
cp "$WORK/.out" note.envelope
run unpack note.envelope
expect_status 0
expect_text 'not a mapping document
'

# The prefix carries the current version: 11 under the roll-back switch.
RollBackMappingVersion=1 run pack note.txt
expect_status 0
checks=$((checks + 1))
[ "$(head -c 7 "$WORK/.out")" = "V11:23:" ] || fail "prefix under roll-back: $(head -c 12 "$WORK/.out")"

# An empty text packs with size 0, which the reader takes for no envelope.
: >empty.txt
run pack empty.txt -o empty.envelope
expect_status 0
checks=$((checks + 1))
[ "$(head -c 6 empty.envelope)" = "V12:0:" ] || fail "prefix of the empty text's envelope: $(cat empty.envelope)"
run unpack empty.envelope
expect_status 1
expect_out </dev/null
expect_err <<'ERR'
kova-mapping: empty.envelope: cannot unpack: error 0x80004005: the envelope's size field is 0
ERR

# Envelopes that do not open.
run unpack "$EXAMPLES/v8_gearbox.json"
expect_status 1
expect_err <<ERR
kova-mapping: $EXAMPLES/v8_gearbox.json: cannot unpack: error 0x80004005: no envelope found
ERR

printf 'V12:10:a!bc' >notbase64.envelope
run unpack notbase64.envelope
expect_status 1
expect_err <<'ERR'
kova-mapping: notbase64.envelope: cannot unpack: error 0x8007000D: the envelope's payload is not base64
ERR

# An editor's final newline is part of the payload, which then is not base64.
{ cat "$EXAMPLES/v12_conveyor.envelope"; echo; } >newline.envelope
run unpack newline.envelope
expect_status 1
expect_err <<'ERR'
kova-mapping: newline.envelope: cannot unpack: error 0x8007000D: the envelope's payload is not base64
ERR

printf 'V12:64:%s' "$(printf 'not a zlib stream' | base64 -w0)" >baddata.envelope
run unpack baddata.envelope
expect_status 1
expect_err <<'ERR'
kova-mapping: baddata.envelope: cannot unpack: error 0x8FFE000D: bad compressed data
ERR

sed "s/^V12:$bytes:/V12:100:/" conveyor.envelope >small.envelope
run unpack small.envelope
expect_status 1
expect_err <<'ERR'
kova-mapping: small.envelope: cannot unpack: error 0x8FFE007A: insufficient buffer (the envelope's size field is smaller than the text it holds)
ERR

printf 'V12:99999999999:eJwDAAAAAAE=' >huge.envelope
run_stdin huge.envelope unpack -
expect_status 1
expect_err <<'ERR'
kova-mapping: -: cannot unpack: the envelope's size field is out of range (above 2147483647)
ERR

# The size is read from the fifth character of the prefix on: after "V9:" it has no digits here.
printf 'V9:1:eJwDAAAAAAE=' >oneversion.envelope
run unpack oneversion.envelope
expect_status 1
expect_err <<'ERR'
kova-mapping: oneversion.envelope: cannot unpack: the envelope's size field cannot be read
ERR

run pack missing.txt
expect_status 1
expect_err <<'ERR'
kova-mapping: missing.txt: not found
ERR
