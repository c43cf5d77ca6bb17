# convert: any version, plain or enveloped, written again in the current version.

gearbox12='{"version":12,"References":[{"CustomData":"{\"project\":\"P-7731\",\"owner\":\"design-office-2\"}","IsLocal":false,"PlexoId":"prd-4bdb6e725c26c314","kOVAId":"GBX-100","KOVASynchroStamp":"V2:TpuyJsEsVRzXg6LonX8yG6pRY6+PPtbaqmI7y+JEakA=","Instances":[{"kOVAId":"SHF-210.1","PlexoId":"ins-156889694c8c0563","IsLocal":false,"RefId":"SHF-210","KOVASynchroStamp":"V2:xxyms/yCgzZF/wmCe328gCLHcikstqClUTMoD4KTwks="},{"kOVAId":"GR-311.1","PlexoId":"ins-d6ed27d0e077e337","IsLocal":false,"RefId":"GR-311","KOVASynchroStamp":"V2:rrT/9tXtOwREMMc+T+DIe8YEP3LU0TEJxeU4cFFxDBA="},{"kOVAId":"GR-311.2","PlexoId":"ins-02f86720c6bfa270","IsLocal":false,"RefId":"GR-311","CustomData":"mirrored","KOVASynchroStamp":"V1:R2oiVpbPWig93zV+PE/T/RMMZjPuub4Y1w/gydJut+w="}]},{"IsLocal":true,"PlexoId":"prd-66cb07bf2889824d","kOVAId":"SHF-210","KOVASynchroStamp":"V2:Z8FkxEtjT7IuYBfx5e/Z7vNdiFk5p9PSC7QHsBDVWlY=","Instances":[{"kOVAId":"DIN6885-A6x6x20.1","PlexoId":"ins-0089adb2ddf37e7e","IsLocal":true,"RefId":"DIN6885-A6x6x20","KOVASynchroStamp":"V1:pFsYrkDvbRy+xEdmQndWpP3Eh147wfsu2HMY3sc1UlI="}]},{"IsLocal":true,"PlexoId":"prd-e4d206b0eb78709b","kOVAId":"GR-311","KOVASynchroStamp":"V2:380YozKr8Sg7YT9vmk0xpnXOAy198rLpN4vwq6a15qE="}]}'

run convert "$EXAMPLES/v8_gearbox.json"
expect_status 0
expect_no_err
expect_text "$gearbox12"
printf '%s' "$gearbox12" >gearbox12.json

# Version 10: bare stamps take their version from "IsSetKSS".
run convert "$EXAMPLES/v10_pump.json"
expect_status 0
expect_text '{"version":12,"References":[{"IsLocal":false,"PlexoId":"prd-15e35cdbb315646a","kOVAId":"PMP-500","KOVASynchroStamp":"V2:ZBA3/UJS58/gOh2PxgOc04Jtu+G+JXgaVX2LNlRPqoM=","Instances":[{"kOVAId":"IMP-510.1","PlexoId":"ins-db1964e27336b5f9","IsLocal":false,"RefId":"IMP-510","KOVASynchroStamp":"V2:MHOOa9qyKXF6Gjb6vMOcGbWr8I0zpKWQ0aimNktQ6XM="},{"kOVAId":"ISO4032-M8.1","PlexoId":"ins-7a31c0e95d24b8f6","IsLocal":true,"RefId":"ISO4032-M8","KOVASynchroStamp":"V1:gXL8uVR8IYVwSdBTrlGPHLN9GMhOB2U4Mh4yBo/mZ+A="}]},{"CustomData":"{\"material\":\"CuZn39Pb3\"}","IsLocal":true,"PlexoId":"prd-c5e8d1f02a96b347","kOVAId":"IMP-510","KOVASynchroStamp":"V1:KPPCSRM165eCsmRkdOO15hjVWnfT2zciDgupsiGFooY="}]}'

# Version 6, from standard input into a file: empty custom data is written, and the CE stamp
# becomes the derived stamp with version 0.
derived="$(printf '%s' "cestampCESv1(x'd4bf9f590afe8d12624cb0b9b37ef9478f673e83')" | digest64)"
run_stdin "$EXAMPLES/v6_bracket.json" convert - -o bracket12.json
expect_status 0
expect_out </dev/null
expect_no_err
expect_file_text bracket12.json '{"version":12,"References":[{"CustomData":"","IsLocal":false,"PlexoId":"prd-bd3803810935aa52","kOVAId":"BRK-2041","KOVASynchroStamp":"V2:hLNQhn6cBoKw3TE17sDpbsYmcW7k1mg3yz4m5OU6rAY=","Instances":[{"kOVAId":"ISO4762-M6x20.1","PlexoId":"ins-40c0771df085b79e","IsLocal":false,"RefId":"ISO4762-M6x20","CustomData":"","KOVASynchroStamp":"V1:+lLqMTFPzdEUXwpERWFfrDhL1tbL0EkhLwOR3yZgNU0="},{"kOVAId":"ISO4762-M6x20.2","PlexoId":"ins-a3ffe502a675e983","IsLocal":false,"RefId":"ISO4762-M6x20","CustomData":"","KOVASynchroStamp":"V0:'"$derived"'"}]}]}'

# A written document converts to itself; an envelope converts like the document it holds.
run convert gearbox12.json
expect_status 0
expect_text "$gearbox12"
run convert "$EXAMPLES/v12_conveyor.json" -o conveyor12.json
expect_status 0
run convert "$EXAMPLES/v12_conveyor.envelope" -o conveyor12-from-envelope.json
expect_status 0
expect_same conveyor12.json conveyor12-from-envelope.json

# --compress: the envelope "V12:<bytes>:<base64>" of the same document.
run convert --compress "$EXAMPLES/v8_gearbox.json" -o gearbox12.envelope
expect_status 0
checks=$((checks + 1))
case "$(head -c 9 gearbox12.envelope)" in
  "V12:${#gearbox12}:") ;;
  *) fail "envelope prefix: $(head -c 12 gearbox12.envelope)" ;;
esac
run unpack gearbox12.envelope
expect_status 0
expect_text "$gearbox12"

# The compression switch of the environment, undone by --plain; --compress does not wrap twice.
IPLX_ACTIVATE_MAPPING_COMPRESSION=1 run convert "$EXAMPLES/v8_gearbox.json" -o switched.envelope
expect_status 0
expect_same gearbox12.envelope switched.envelope
IPLX_ACTIVATE_MAPPING_COMPRESSION=1 run convert --compress "$EXAMPLES/v8_gearbox.json" -o switched2.envelope
expect_status 0
expect_same gearbox12.envelope switched2.envelope
IPLX_ACTIVATE_MAPPING_COMPRESSION=1 run convert --plain "$EXAMPLES/v8_gearbox.json"
expect_status 0
expect_text "$gearbox12"

# The roll-back switch: version 11.
RollBackMappingVersion=1 run convert "$EXAMPLES/v8_gearbox.json"
expect_status 0
expect_text "${gearbox12/\"version\":12/\"version\":11}"

# A document that does not read is not converted, and an existing output file is left as it was.
printf 'keep me' >kept.json
run convert "$EXAMPLES/broken_v11.json" -o kept.json
expect_status 1
expect_out </dev/null
expect_err <<ERR
kova-mapping: $EXAMPLES/broken_v11.json: error 0x80004005: UNVALUATED MANDATORY FIELD IsLocal; UNVALUATED MANDATORY FIELD KOVASynchroStamp
ERR
expect_file_text kept.json 'keep me'
checks=$((checks + 1))
[ "$(find . -name 'kept.json.*' | wc -l)" -eq 0 ] || fail "a temporary file was left: $(ls -a)"

run convert "$EXAMPLES/v8_gearbox.json" -o no/such/folder/out.json
expect_status 1
expect_err <<'ERR'
kova-mapping: no/such/folder/out.json: cannot write (No such file or directory)
ERR

# A device is written directly, not replaced.
run convert "$EXAMPLES/v8_gearbox.json" -o /dev/null
expect_status 0
expect_no_err
checks=$((checks + 1))
[ -c /dev/null ] || fail "/dev/null is no longer a device"
