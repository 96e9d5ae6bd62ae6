#!/usr/bin/env bash
# XML documents read, searched, edited, sorted and checked, broken and hostile ones too.
. "$(dirname "$0")/show.bash"

iconv -f UTF-8 -t SHIFT_JIS >library.xml <<'XML'
<?xml version="1.0" encoding="Shift_JIS"?>
<library><book id="20" lang="ja"><title>吾輩は猫である</title><price currency="JPY">880</price></book><book
id="3" lang="en"><title>The Trial</title><price currency="EUR">9</price></book><book id="1" lang="ja"><title
>坊っちゃん</title><price currency="JPY">440</price></book></library>
XML
printf '<a><b x=1 y="2>one<c>two</b><d>&amp;lt;</a' >broken.xml
{
  printf '<!DOCTYPE a [<!ENTITY a "ha">'
  last=a
  for name in b c d e f g h i j; do
    printf '<!ENTITY %s "%s">' $name "$(printf "&$last;%.0s" 1 2 3 4 5 6 7 8 9 10)"
    last=$name
  done
  printf ']><a>&j;</a>'
} >bomb.xml

title "1. A document in Shift_JIS, indented and made UTF-8"
show zantrel xml format --encoding utf-8 -o library.utf-8.xml library.xml
show cat library.utf-8.xml

title "2. Values by path, straight from the file in Shift_JIS"
show zantrel xml get 'book[2]|title' library.xml
show zantrel xml get 'book[1]|price|(currency)' library.xml
show zantrel xml get 'book|$' library.xml

title "3. What has a certain attribute or content, with the path to it"
show zantrel xml find --tag price --attr 'currency=J*' library.xml
show zantrel xml find --content '*猫*' library.xml

title "4. A value changed and the records sorted, in the file itself"
show zantrel xml set 'book|price' 900 -o library.utf-8.xml library.utf-8.xml
show zantrel xml sort --by content --record price --numeric --reverse -o library.utf-8.xml library.utf-8.xml
show zantrel xml find --tag price library.utf-8.xml

title "5. A broken document: what is wrong with it, and what is made of it all the same"
show cat broken.xml
printf '\n'
show zantrel xml validate broken.xml
show zantrel xml format broken.xml

title "6. A document that would become a billion words elsewhere stays what it is"
show ls -l bomb.xml
show zantrel xml get '*' bomb.xml

title "7. A million elements inside each other, and as many side by side"
awk 'BEGIN { for (i = 0; i < 1000000; ++i) printf "<a>" }' >deep.xml
awk 'BEGIN { printf "<a>"; for (i = 0; i < 1000000; ++i) printf "<b n=\"%d\"/>", i; print "</a>" }' >wide.xml
show zantrel xml find --count deep.xml
show zantrel xml find --count --attr 'n=*99' wide.xml
printf '\nThe files are in %s\n' "$PWD"
