#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Validates each JSON document of a directory against its definition in the schema: check_schema.py SCHEMA DIRECTORY.

A line per mistake; the exit code is 1 when there is one."""
import json
import pathlib
import sys

# Where Debian installs it, also for an interpreter that is not Debian's.
sys.path.append("/usr/lib/python3/dist-packages")
import jsonschema  # noqa: E402


def mistakes(schema, whole, document):
    name = str(document.get("schema", "")).removeprefix("pwrmgtctl.").rpartition("/")[0]
    if name not in schema["$defs"]:
        return [f"no definition of {name!r}"]
    # By its own definition first: an error of `oneOf` would name every other one.
    own = jsonschema.Draft202012Validator({"$ref": f"#/$defs/{name}", "$defs": schema["$defs"]})
    found = [f"{'/'.join(map(str, error.absolute_path))}: {error.message}" for error in own.iter_errors(document)]
    if not found and not whole.is_valid(document):
        found.append("taken by its definition, but not by exactly one of the documents")
    return found


def main():
    with open(sys.argv[1], encoding="utf-8") as file:
        schema = json.load(file)
    jsonschema.Draft202012Validator.check_schema(schema)
    whole = jsonschema.Draft202012Validator(schema)
    documents = sorted(pathlib.Path(sys.argv[2]).iterdir())
    if not documents:
        sys.exit("no documents")
    found = [f"{path.name}: {words}" for path in documents
             for words in mistakes(schema, whole, json.loads(path.read_text(encoding="utf-8")))]
    if found:
        print("\n".join(found))
    sys.exit(1 if found else 0)


if __name__ == "__main__":
    main()
