# bash completion for vistatrim

_vistatrim() {
    local word=${COMP_WORDS[COMP_CWORD]}
    local before=${COMP_WORDS[COMP_CWORD - 1]}
    local commands="suggest crop report maps contact-sheet"
    local command="" i
    for ((i = 1; i < COMP_CWORD; ++i)); do
        case " $commands " in
        *" ${COMP_WORDS[i]} "*)
            command=${COMP_WORDS[i]}
            break
            ;;
        esac
    done

    if [ -z "$command" ]; then
        mapfile -t COMPREPLY < <(compgen -W "$commands --help --version" -- "$word")
        return
    fi

    case $before in
    --rank-by)
        mapfile -t COMPREPLY < <(compgen -W "people composition coverage border peak centre-peak engine" -- "$word")
        return
        ;;
    --maps)
        mapfile -t COMPREPLY < <(compgen -W "yes no" -- "$word")
        return
        ;;
    --faces)
        mapfile -t COMPREPLY < <(compgen -W "off large all" -- "$word")
        return
        ;;
    --format)
        mapfile -t COMPREPLY < <(compgen -W "jpg png webp tif avif heic" -- "$word")
        return
        ;;
    --chroma)
        mapfile -t COMPREPLY < <(compgen -W "4:4:4 4:2:0" -- "$word")
        return
        ;;
    --preset)
        mapfile -t COMPREPLY < <(compgen -W "square portrait landscape classic wide cinema vertical
            banner panorama story post og-image thumbnail avatar hd uhd print-10x15 print-13x18
            print-a4 passport" -- "$word")
        return
        ;;
    --cell | --name | --fill | --widths | --sizes | --aspect | --size | --scale | --density | --keep | --avoid | --must-keep | --must-avoid | \
        --weights | --background | --resize | --quality | -n | --top | -j | --jobs)
        COMPREPLY=()
        return
        ;;
    esac

    if [[ $word == -* ]]; then
        local options="--help --background --files-from --jobs --null --quiet --recursive --timings --output
            --force"
        local request="--top --rank-by --ranking --weights --aspect --preset --presets --each-ratio
            --largest --scale --size --density --keep --avoid --must-keep --must-avoid --faces --regions
            --ignore-metadata-regions"
        case $command in
        suggest) options="$options $request --json --csv --explain --resume" ;;
        crop) options="$options $request --resize --format --quality --chroma --strip --resume
            --name --fill --widths --upscale --from --manifest --picture --sizes --xmp --xmp-only" ;;
        report) options="$options $request --maps" ;;
        contact-sheet) options="$options $request --cell" ;;
        esac
        mapfile -t COMPREPLY < <(compgen -W "$options" -- "$word")
        return
    fi
    mapfile -t COMPREPLY < <(compgen -f -- "$word")
}

complete -o filenames -F _vistatrim vistatrim
