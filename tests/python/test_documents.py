"""Reading and writing mapping documents."""

import pytest

import kovamapping
from conftest import make_table


def test_a_written_table_reads_back_with_the_same_objects():
    table = make_table()
    copy = kovamapping.read(table.to_json())
    assert [(o.kova_id, o.plexo_id, o.stamp, o.stamp_version) for o in copy] == [
        ("R1", "P1", "s-R1", 2),
        ("I1", "Q1", "s-I1", 1),
    ]
    assert copy.version == 12


def test_a_refused_document_raises_error_with_the_readers_messages():
    with pytest.raises(kovamapping.Error) as raised:
        kovamapping.read('{"version": 11, "References": [{"kOVAId": "a", "PlexoId": "p"}]}')
    assert raised.value.status == 0x80004005
    assert raised.value.messages == [
        "UNVALUATED MANDATORY FIELD IsLocal",
        "UNVALUATED MANDATORY FIELD KOVASynchroStamp",
    ]
    assert "0x80004005" in str(raised.value)
    assert isinstance(raised.value, ValueError)
