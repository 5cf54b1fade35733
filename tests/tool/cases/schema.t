The layout of a type, by name or by number.

  $ wmq schema JOB_START
  JOB_START (2), jobStartLog
  
  Position  Field                      Form                  Gate       Condition  Default               Note
  1         jobId                      %d
  2         startInt1                  + %d
  3         startInt2                  + %d
  4         startInt3                  + %d
  5         hostFactor                 + %3.1f
  6         numExHosts                 + %d                                                              count of the host list
  7         execHosts[numExHosts]      host list                                                         a count of 0 is refused
  8         startStr1                  quoted                from 2.2              ""
  9         startStr2                  quoted                from 2.2              ""
  10        startInt4                  %d                    from 3.0              0
  11        startStr3                  quoted                above 3.0             ""
  12        startInt5                  %d                    above 3.0             0
  13        startStr4                  quoted                from 6.0              ""
  14        startInt6                  %d                    above 6.1             2147483647
  15        startStr5                  quoted                from 9.1              ""
  16        srcCluster                 quoted                from 9.1              ""
  17        srcJobId                   %lld                  from 9.1              0
  18        dstCluster                 quoted                from 9.1              ""
  19        dstJobId                   %lld                  from 9.1              0
  20        numNamedInts               %d                    from 9.11             0
  21        namedInts[numNamedInts]    entries               from 9.11             null
  21.1        name                     quoted
  21.2        value                    %d
  22        affinityAlloc              quoted affinity text  from 9.11             null
  23        startInt7                  %d                    from 9.11             -1
  24        startInt8                  %d                    from 9.12             0                     0 when it does not convert
  25        numAllocHosts              %d                    from 9.13             as copy of execHosts
  26        allocHosts[numAllocHosts]  host list             from 9.13             copy of execHosts     a single 0 where the counts are equal: a copy of execHosts
  27        startInt9                  %d                    from 9.13             unchanged
  -         reserved1                                                                                    no line carries it, and nobody releases it
  -         reserved2                                                                                    no line carries it, and nobody releases it
  28        startLong1                 %d                    from 10.1             0                     0 when it does not convert
  29        startLong2                 %d                    from 10.1             0                     0 when it does not convert
  $ wmq schema 2 | cmp - <(wmq schema JOB_START)

Only what a line of a version carries.

  $ wmq schema JOB_START --version 3.0
  JOB_START (2), jobStartLog, lines of version 3.0
  
  Position  Field                  Form       Gate      Condition  Default  Note
  1         jobId                  %d
  2         startInt1              + %d
  3         startInt2              + %d
  4         startInt3              + %d
  5         hostFactor             + %3.1f
  6         numExHosts             + %d                                     count of the host list
  7         execHosts[numExHosts]  host list                                a count of 0 is refused
  8         startStr1              quoted     from 2.2             ""
  9         startStr2              quoted     from 2.2             ""
  10        startInt4              %d         from 3.0             0
  $ wmq schema JOB_STATUS --version 2.1 --json | jq -c '.fields[] | [.position, .field, .form, .condition]'
  [1,"jobId","%d",""]
  [2,"jStatus","%d",""]
  [3,"reason","%d",""]
  [4,"subreasons","%d",""]
  [5,"cpuTime","%4.4f",""]
  [6,"endTime","%d",""]
  [7,"ru","%d",""]
  [8,"wmxRusage","19 numbers","ru is not 0"]
  $ wmq schema JOB_NEW --json | jq -c '.fields[] | select(.field == "strPairs")'
  {"position":33,"field":"strPairs","kind":"struct","shape":"counted","count":"numStrPairs","form":"entries","gate":null,"condition":"","default":"","note":"","flags":[],"structure":"strPair","fields":[{"position":1,"field":"first","kind":"string","shape":"one","form":"quoted, unescaped","gate":null,"condition":"","default":"","note":"written without any escaping","flags":[]},{"position":2,"field":"second","kind":"string","shape":"one","form":"quoted, unescaped","gate":null,"condition":"","default":"","note":"written without any escaping","flags":[]},{"position":3,"field":"flags","kind":"int32","shape":"one","form":"%d","gate":null,"condition":"","default":"","note":"","flags":[]}]}
  $ wmq schema JOB_VACATED
  JOB_VACATED (30)
  
  nothing behind the header
  $ wmq schema JOB_VACATED --version 9.1 --json
  {"type":"JOB_VACATED","code":30,"structure":"","version":"9.1","fields":[]}

All types follow each other.

  $ wmq schema --json | jq .code | sort -nuc
  $ wmq schema --json | jq -c '[.type, .code]' | head -n 2
  ["JOB_NEW",1]
  ["JOB_START",2]
  $ wmq schema | grep -cx "$(wmq schema JOB_VACATED | head -n 1)"
  1

The pages of documentation are up to date.

  $ wmq schema --markdown pages
  $ diff -r pages "$DOCS/layout"

  $ wmq schema --markdown /dev/null/pages
  wmq: /dev/null/pages: Not a directory
  [3]
  $ wmq schema > /dev/full
  wmq: standard output: No space left on device
  [3]
