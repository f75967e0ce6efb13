"""Private displays, homes and pages for the tests that drive the real program."""
