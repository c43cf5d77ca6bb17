# ces: the stamp derived from a CE stamp, "V0KSS:" + base64 of the SHA-256 digest of "cestamp"
# followed by the CE stamp.

ce="CESv1(x'd4bf9f590afe8d12624cb0b9b37ef9478f673e83')"
run ces "$ce"
expect_status 0
expect_no_err
expect_text "V0KSS:$(printf '%s' "cestamp$ce" | digest64)
"

# Any text is hashed as it is, even an empty one; the switch of the stamp computation plays no part.
run ces ""
expect_status 0
expect_text "V0KSS:$(printf '%s' "cestamp" | digest64)
"

run ces -o ces.txt "CESv1(x'02')"
expect_status 0
expect_out </dev/null
expect_file_text ces.txt "V0KSS:$(printf '%s' "cestampCESv1(x'02')" | digest64)
"

run ces $'CESv1(x\'\xff\')'
expect_status 1
expect_err <<'ERR'
kova-mapping: CESTAMP: not UTF-8 (invalid byte at offset 8)
ERR
