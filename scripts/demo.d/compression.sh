#!/usr/bin/env bash
# Files compressed and expanded, with gzip and tar as witnesses, and an archive with bad intentions.
. "$(dirname "$0")/show.bash"

seq 1 60000 | sed 's/$/ bottles of beer on the wall/' >song.txt

title "1. A file compressed, checked by gzip, and expanded"
show zantrel gzip -k -9 song.txt
show ls -l song.txt song.txt.gz
[ -z "$(command -v gzip)" ] || show gzip -t -v song.txt.gz
show sh -c 'zantrel gunzip -c song.txt.gz | cmp - song.txt && echo the same'

title "2. Other formats"
for format in deflate bz2 lzw ppmd; do
  show zantrel compress -a "$format" -o "song.$format" song.txt
done
show ls -l song.deflate song.bz2 song.lzw song.ppmd

title "3. Data that expand too far are stopped"
head -c 200000000 /dev/zero | zantrel gzip >bomb.gz
show ls -l bomb.gz
show zantrel --log gunzip -k --max-size 10M bomb.gz
show ls bomb

title "4. An archive that wants to write outside its folder"
mkdir -p evil && printf 'a good file\n' >evil/good.txt
printf 'gotcha\n' >outside.txt
tar -C evil -czPf evil.tar.gz --transform 's,outside,../../outside,' good.txt ../outside.txt 2>/dev/null || true
show tar -tzPf evil.tar.gz
show zantrel --log untargz -C unpacked evil.tar.gz
show ls unpacked
