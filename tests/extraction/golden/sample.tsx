import React from 'react'

interface Props { title: string; onClose?: () => void }

/** Shows a title. */
export const Panel: React.FC<Props> = ({ title }) => {
  const [open, setOpen] = React.useState(false)
  return <Frame open={open}><Title>{title}</Title><Close /></Frame>
}
