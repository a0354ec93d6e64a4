"""All rows of the report, in the order in which they are shown."""

from report import cases_host, cases_more_values, cases_regions, cases_values

CASES = [*cases_values.CASES, *cases_more_values.CASES, *cases_regions.CASES, *cases_host.CASES]
BY_KEY = {case.key: case for case in CASES}
assert len(BY_KEY) == len(CASES)
