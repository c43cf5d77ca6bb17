"""pandas DataFrames of tables and audits; pandas is needed only here."""

from __future__ import annotations

import dataclasses


def _pandas():
    try:
        import pandas
    except ImportError as error:  # pragma: no cover - depends on the machine
        raise ImportError(
            "kovamapping: DataFrames need pandas, which is not installed "
            "(on Debian: apt-get install python3-pandas)"
        ) from error
    return pandas


TABLE_COLUMNS = ["kind", "kova_id", "plexo_id", "ref_id", "parent", "stamp", "stamp_version", "custom_data", "is_local"]


def table_to_pandas(table):
    """A DataFrame of the table's objects in document order, one row each: kind ("reference" or
    "instance"), kova_id, plexo_id, ref_id (None for references), parent (the kOVA id of the
    reference an instance stands under, None for references), stamp, stamp_version, custom_data,
    is_local."""
    pandas = _pandas()
    rows = []
    for reference in table.references:
        rows.append(("reference", reference.kova_id, reference.plexo_id, None, None, reference.stamp,
                     reference.stamp_version, reference.custom_data, reference.is_local))
        for instance in reference.instances:
            rows.append(("instance", instance.kova_id, instance.plexo_id, instance.ref_id, reference.kova_id,
                         instance.stamp, instance.stamp_version, instance.custom_data, instance.is_local))
    return pandas.DataFrame.from_records(rows, columns=TABLE_COLUMNS)


def audit_frame(paths, workers=None, progress=False):
    """A DataFrame of kovamapping.audit(paths, workers, progress), one row per document, with the
    columns of AuditRecord."""
    pandas = _pandas()
    from ._audit import AuditRecord, audit

    columns = [field.name for field in dataclasses.fields(AuditRecord)]
    rows = [dataclasses.astuple(record) for record in audit(paths, workers=workers, progress=progress)]
    return pandas.DataFrame.from_records(rows, columns=columns)
