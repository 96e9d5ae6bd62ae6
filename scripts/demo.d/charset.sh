#!/usr/bin/env bash
# Real files of several charsets, made by iconv, converted by zantrel.
. "$(dirname "$0")/show.bash"

# The first bytes of a file, as they are.
bytes() { od -An -tx1 -N24 "$1" | tr -s ' \n' ' ' | sed 's/^/    bytes:/; s/$/.../'; echo; }

iconv -f UTF-8 -t SHIFT_JIS >page.html <<'TEXT'
<!DOCTYPE html>
<html lang="ja"><head>
<meta http-equiv="Content-Type" content="text/html; charset=Shift_JIS">
<title>吾輩は猫である</title></head>
<body><p>吾輩は猫である。名前はまだ無い。</p></body></html>
TEXT
iconv -f UTF-8 -t WINDOWS-1251 >letter.txt <<'TEXT'
Все счастливые семьи похожи друг на друга,
каждая несчастливая семья несчастлива по-своему.
TEXT
iconv -f UTF-8 -t GB18030 >poem.txt <<'TEXT'
床前明月光，疑是地上霜。
举头望明月，低头思故乡。 €50 😀
TEXT
iconv -f UTF-8 -t UTF-16 >notes.txt <<'TEXT'
Grüße, Ελληνικά, עברית, 日本語 and 🎵 in one file.
TEXT

title "1. An HTML page that declares Shift_JIS becomes UTF-8, and says so"
bytes page.html
show zantrel charset html page.html
show zantrel charset html --to utf-8 -o page.utf-8.html page.html
show cat page.utf-8.html

title "2. A Windows-1251 letter becomes UTF-8"
bytes letter.txt
show zantrel charset convert -f windows-1251 -t utf-8 letter.txt

title "3. A GB18030 poem, four-byte codes included, becomes UTF-8"
bytes poem.txt
show zantrel charset convert -f gb18030 -t utf-8 poem.txt

title "4. A UTF-16 file is read by its byte-order mark"
bytes notes.txt
show zantrel charset convert -f utf-16 -t utf-8 notes.txt

title "5. Every call keeps a log; --log shows it"
show zantrel --log charset convert -f utf-16 -t utf-8 -o notes.utf-8.txt notes.txt

title "6. A conversion that would lose text fails, and its log says why and where"
show zantrel charset convert -f gb18030 -t iso-8859-1 -o poem.latin1.txt poem.txt
show ls poem.latin1.txt

title "7. The same with entities in place of what iso-8859-1 lacks"
show zantrel charset convert -f gb18030 -t iso-8859-1 --on-error hex -o poem.latin1.txt poem.txt
show cat poem.latin1.txt

title "8. What iconv makes of these files is the same, byte for byte"
for job in "SHIFT_JIS page.html" "WINDOWS-1251 letter.txt" "GB18030 poem.txt" "UTF-16 notes.txt"; do
  read -r charset file <<<"$job"
  zantrel charset convert -f "$charset" -t utf-8 -o ours.txt "$file"
  iconv -f "$charset" -t UTF-8 -o theirs.txt "$file"
  cmp ours.txt theirs.txt
  printf '    %-12s %-11s %5d bytes of UTF-8, the same\n' "$charset" "$file" "$(wc -c <ours.txt)"
done
printf '\nThe files are in %s\n' "$PWD"
