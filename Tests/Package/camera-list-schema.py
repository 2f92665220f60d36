# SPDX-License-Identifier: Apache-2.0
"""Checks that the schema of camera lists takes the example list, and refuses it without any key of its first entries.

Arguments: schema, list.
"""

import copy
import json
import sys

import jsonschema

schema, cameras = (json.load(open(path, encoding="utf-8")) for path in sys.argv[1:])
jsonschema.Draft202012Validator.check_schema(schema)
validator = jsonschema.Draft202012Validator(schema)
validator.validate(cameras)


def objects(document):
    """The list itself and the first entry of every array in it."""
    yield document
    for value in document.values():
        first = value[0] if isinstance(value, list) and value else value
        if isinstance(first, dict):
            yield from objects(first)


for index, found in enumerate(objects(cameras)):
    for key in found:
        broken = copy.deepcopy(cameras)
        del list(objects(broken))[index][key]
        if validator.is_valid(broken):
            sys.exit(f"The schema takes a list without the key '{key}'.")
