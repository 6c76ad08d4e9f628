const Item = <T,>({name, size = 1}: Props<T>): JSX.Element => (
  <Row<T> key={name} data-size={size as number}><span title="a">{name}&nbsp;text</span><br /></Row>
);
