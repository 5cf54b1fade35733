gzip and zstd are told by content, whatever the name.

  $ printf '"JOB_VACATED" "10.1" 5\n' > plain
  $ gzip -c plain > packed.txt
  $ zstd -q -c plain > packed.log
  $ wmq decode plain packed.txt packed.log
  {"type":"JOB_VACATED","code":30,"version":"10.1","eventTime":5,"eventLog":{}}
  {"type":"JOB_VACATED","code":30,"version":"10.1","eventTime":5,"eventLog":{}}
  {"type":"JOB_VACATED","code":30,"version":"10.1","eventTime":5,"eventLog":{}}
  $ wmq decode < packed.txt
  {"type":"JOB_VACATED","code":30,"version":"10.1","eventTime":5,"eventLog":{}}
  $ cat packed.log packed.log | wmq decode
  {"type":"JOB_VACATED","code":30,"version":"10.1","eventTime":5,"eventLog":{}}
  {"type":"JOB_VACATED","code":30,"version":"10.1","eventTime":5,"eventLog":{}}
  $ cat packed.txt packed.txt > twice
  $ wmq stats twice | head -n 1
  Stream        1 file, 2 records, 46 bytes, 0 malformed lines

JSON may be packed too.

  $ wmq decode plain | gzip | wmq encode
  "JOB_VACATED" "10.1" 5 (no line end)

Data that is cut short or damaged is reported behind the lines that could be read.

  $ head -c 30 packed.txt > short
  $ wmq decode short 2>&1 | tail -n 1
  short:1: error 46 WMQE_BAD_FORMAT: gzip data is cut short
  [1]
  $ head -c 20 packed.log > short
  $ wmq decode short 2>&1 | tail -n 1
  short:1: error 46 WMQE_BAD_FORMAT: zstd data is cut short
  [1]
  $ (cat packed.txt; echo rest) > longer
  $ wmq decode longer plain 2> faults
  {"type":"JOB_VACATED","code":30,"version":"10.1","eventTime":5,"eventLog":{}}
  {"type":"JOB_VACATED","code":30,"version":"10.1","eventTime":5,"eventLog":{}}
  [1]
  $ cat faults
  longer:2: error 46 WMQE_BAD_FORMAT: gzip data: incorrect header check

What is left of a line is no line: its last number may have been cut.

  $ printf '"JOB_VACATED" "10.1" 5\n"JOB_VACATED" "10.1" 1700000000' | gzip | head -c -8 > short
  $ wmq decode short
  {"type":"JOB_VACATED","code":30,"version":"10.1","eventTime":5,"eventLog":{}}
  short:2: error 46 WMQE_BAD_FORMAT: gzip data is cut short
  [1]
  $ wmq stats short
  short:2: error 46 WMQE_BAD_FORMAT: gzip data is cut short
  Stream        1 file, 1 record, 23 bytes, 0 malformed lines
  Time span     1970-01-01T00:00:05Z to 1970-01-01T00:00:05Z, 0:00:00
  Versions      10.1 (1 record)
  
  Type         Records  Bytes
  JOB_VACATED        1     23  ████████████████████
  [1]
  $ wmq verify short
  short:2: error 46 WMQE_BAD_FORMAT: gzip data is cut short
  1 record in 1 file: not whole
  [1]
  $ printf '{"type":"JOB_VACATED","eventTime":5}\n{"type":"JOB_VACATED","eventTime":6}' | gzip | head -c -8 > short
  $ wmq encode short
  "JOB_VACATED" "10.1" 5short:2: error 46 WMQE_BAD_FORMAT: gzip data is cut short
  [1]
