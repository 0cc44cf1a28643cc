echo "script: $# arguments"
