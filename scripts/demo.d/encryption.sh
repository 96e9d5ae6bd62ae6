#!/usr/bin/env bash
# Files hashed, checked, encrypted and decrypted, with sha256sum and openssl as witnesses.
. "$(dirname "$0")/show.bash"

printf 'Meet me at noon.\n' >letter.txt
head -c 3000000 /dev/urandom >photos.bin

title "1. A list of digests, which sha256sum understands and zantrel checks"
zantrel hash letter.txt photos.bin >SUMS
show cat SUMS
[ -z "$(command -v sha256sum)" ] || show sha256sum --check SUMS
show zantrel hash --check SUMS

title "2. A file that was changed is found"
printf 'Meet me at one.\n' >letter.txt
show zantrel hash --check SUMS

title "3. Encryption under a random key, with a random IV, and back"
zantrel random --raw 32 >secret.key
iv=$(zantrel random 16)
show zantrel encrypt --key-file secret.key --key-bits 256 --iv "$iv" -o letter.aes letter.txt
show zantrel decrypt --key-file secret.key --key-bits 256 --iv "$iv" letter.aes
if command -v openssl >/dev/null; then
  show openssl enc -d -aes-256-cbc -K "$(od -An -tx1 -v secret.key | tr -d ' \n')" -iv "$iv" -in letter.aes
fi

title "4. What is no encrypted data fails, says why, and leaves no file"
head -c 20 letter.aes >cut.aes
show zantrel --log decrypt --key-file secret.key --key-bits 256 --iv "$iv" -o cut.txt cut.aes
show ls cut.txt
