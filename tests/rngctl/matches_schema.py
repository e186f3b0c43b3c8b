#!/usr/bin/env python3
"""matches_schema.py SCHEMA: says why and fails unless standard input is JSON that matches the schema."""
import json
import sys

import jsonschema

with open(sys.argv[1], encoding="utf-8") as file:
    schema = json.load(file)
jsonschema.Draft202012Validator.check_schema(schema)
jsonschema.Draft202012Validator(schema).validate(json.load(sys.stdin))
