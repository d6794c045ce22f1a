"""The whole job with the installed program, as somebody who is not root."""

from installed_program import whole_job

if __name__ == "__main__":
    whole_job()
