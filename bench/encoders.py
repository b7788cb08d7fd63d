"""Base64 in lines and quoted-printable, against plain loops over a table in the same run."""
import json
import subprocess


def main():
    lines = subprocess.run(["build/bench/bin/bench_encoders"], check=True, capture_output=True, text=True).stdout
    for line in map(json.loads, lines.splitlines()):
        ours, plain = line["mb_per_second"], line["plain_mb_per_second"]
        print(f"{line['name']:45} {ours / 1000:6.2f} GB/s, plain loop {plain / 1000:5.2f} GB/s, ratio {ours / plain:5.1f}")


if __name__ == "__main__":
    main()
