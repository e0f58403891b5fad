"""Looks at requests before they are sent: validate.py SCHEMAS, the directory in which the schemas are."""

import json
import sys
from pathlib import Path

from jsonschema import Draft202012Validator

schemas = Path(sys.argv[1])


# [validate]
def mistakes(function: str, request: str) -> list[str]:
    """What is wrong with a request to a function of the library."""
    schema = json.loads((schemas / f"{function}.schema.json").read_text(encoding="utf-8"))
    errors = Draft202012Validator(schema).iter_errors(json.loads(request))
    return [f"{error.json_path}: {error.message}" for error in errors]


assert mistakes("addUsers", '{"D": {"items": [{"id": 7, "active": 1}]}}') == []
assert mistakes("addUsers", '{"D": {"items": [{"id": 7, "active": true}]}}') == [
    "$.D.items[0].active: True is not one of [0, 1]"]
assert mistakes("addEvent", '{"D": {"id": 1, "time": 1700000000000}}') == [
    "$.D.time: 1700000000000 is greater than the maximum of 4294967295"]
# [validate]
