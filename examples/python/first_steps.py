"""A tree, a query, a table, and the record of it all."""

import ztbaseclient as zt

DOCUMENT = b"""<job id="7">
  <row id="1" similarity="0.25" name="alpha"/>
  <row id="4" similarity="0.75" name="beta"/>
</job>"""


def main() -> None:
    job = zt.parse(DOCUMENT)
    print(job)
    print(job.query("//row[@id>3]/@name"))
    table = zt.table(job, "//row", {"id": "@id", "similarity": "@similarity"})
    print(table["similarity"].mean())

    job["@finished"] = 1
    job.children.append(zt.Node("row", {"id": 9, "similarity": 0.5}))
    record = job.write_record()
    assert zt.read_record(record) == job
    print(f"{len(record)} bytes")

    node = zt.to_node({"id": 7, "scores": [0.5, 1.5], "tags": ["a", "b"]})
    print(node.to_python())


if __name__ == "__main__":
    main()
