On a terminal titles and bars are coloured, elsewhere and with NO_COLOR they are not.

  $ echo '"JOB_VACATED" "10.1" 5' > stream
  $ terminal() { TERM=${TERM_KIND-xterm} script -qec "$1" /dev/null < /dev/null | sed 's/\r//g; s/\x1b/<ESC>/g'; }
  $ terminal 'wmq stats stream'
  <ESC>[1mStream        <ESC>[0m1 file, 1 record, 23 bytes, 0 malformed lines
  <ESC>[1mTime span     <ESC>[0m1970-01-01T00:00:05Z to 1970-01-01T00:00:05Z, 0:00:00
  <ESC>[1mVersions      <ESC>[0m10.1 (1 record)
  
  <ESC>[1mType         Records  Bytes<ESC>[0m
  JOB_VACATED        1     23  <ESC>[36m████████████████████<ESC>[0m
  $ NO_COLOR=1 terminal 'wmq stats stream'
  Stream        1 file, 1 record, 23 bytes, 0 malformed lines
  Time span     1970-01-01T00:00:05Z to 1970-01-01T00:00:05Z, 0:00:00
  Versions      10.1 (1 record)
  
  Type         Records  Bytes
  JOB_VACATED        1     23  ████████████████████
  $ NO_COLOR= terminal 'wmq stats stream' | grep -c ESC
  5
  $ TERM_KIND=dumb terminal 'wmq stats stream' | grep -c ESC
  0
  [1]
  $ wmq stats stream | grep -c "$(printf '\033')"
  0
  [1]

Long work shows a bar on the terminal and leaves no trace of it. A fault takes its line.

  $ for i in $(seq 300); do cat stream; done > lines
  $ terminal '(cat lines; sleep 1; cat lines; echo nonsense) | wmq decode > /dev/null' |
  >   sed 's/[0-9.]* MB/N MB/g; s/<ESC>\[K/ (erased)\n/g' | cut -d : -f 1-3 | grep '[:N]' | sort -u
  -:601: error 46 WMQE_BAD_FORMAT
  N MB  N MB/s (erased)
  [1]

Short work shows none, nor does work that prints to the same terminal, or that has no terminal.

  $ terminal 'wmq decode lines > /dev/null'
  $ terminal '(cat lines; sleep 1; cat lines) | wmq decode --until 0'
  $ (cat lines; sleep 1; cat lines) | wmq decode > /dev/null
  $ TERM_KIND=dumb terminal '(cat lines; sleep 1; cat lines) | wmq decode > /dev/null'
